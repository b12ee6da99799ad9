# Shared by the scripts of this folder: where the repository is, messages, packages.
set -euo pipefail
export LC_ALL=C.UTF-8

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
jobs=$(nproc)

say() { printf '\n== %s\n' "$*"; }

die() {
    printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

step=start
trap 'die "stopped at: $step"' ERR

# Announces a step; a failure in it is reported under this name.
step() {
    step=$*
    say "$*"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "needs root or sudo to run: $*"
    fi
}

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# Installs those of the given Debian packages that are missing.
need_packages() {
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    if [ ${#missing[@]} -eq 0 ]; then
        echo "all packages are there"
        return
    fi
    echo "installing: ${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# The same for servers, none of which is started.
need_servers() {
    local policy=/usr/sbin/policy-rc.d status=0
    if [ -e $policy ]; then
        need_packages "$@"
        return
    fi
    printf '#!/bin/sh\nexit 101\n' | as_root tee $policy >/dev/null
    as_root chmod 755 $policy
    (need_packages "$@") || status=$?
    as_root rm -f $policy
    return $status
}

# Installs the PostgreSQL server's programs only: no cluster is created.
need_postgresql_server() {
    [ ! -x /usr/lib/postgresql/15/bin/initdb ] || return 0
    need_packages postgresql-common
    as_root sed -i 's/^#\?create_main_cluster.*/create_main_cluster = false/' \
        /etc/postgresql-common/createcluster.conf
    need_servers postgresql-15
}

# What the program needs to be built and to run.
build_packages=(g++ make cmake libarchive-dev libisal-dev zlib1g-dev liblzma-dev
    libsoci-dev libsoci-sqlite3-4.0 libsoci-postgresql4.0 libsqlite3-dev
    libtomlplusplus-dev node-d3)

# What the quick tests need besides.
test_packages=(libgtest-dev libsqlite3-dev locales)

# build_preset PRESET TARGET [OPTION]...: configures a preset with cmake's options and builds a target of it.
build_preset() {
    local preset=$1 target=$2 log
    shift 2
    log=$(mktemp)
    cmake --preset "$preset" "$@" >"$log" 2>&1 || { cat "$log"; rm -f "$log"; return 1; }
    rm -f "$log"
    cmake --build --preset "$preset" --target "$target" -j "$jobs" -- --no-print-directory -s
}

# report_skipped PRESET: says what the preset's last test run could not do here, and why.
report_skipped() {
    awk '/^[0-9]+\/[0-9]+ Test: / { name = $3 }
        /^skipped/ { print name ": " $0 }
        skip { print name ": skipped: " $0 }
        { skip = /: Skipped$/ }' "build/$1/Testing/Temporary/LastTest.log"
}
