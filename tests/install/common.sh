# Shared by the scripts of this folder: arguments, messages, a scratch folder that goes away at the end.
# Arguments: source folder, build folder.
set -euo pipefail
export LC_ALL=C.UTF-8
source_dir=$1
build_dir=$2
scratch=$(mktemp -d --suffix=.quarl-install)
trap 'chmod -R u+w "$scratch"; rm -rf "$scratch"' EXIT
trap 'echo "FAILED at line $LINENO: $BASH_COMMAND" >&2' ERR
unset QUARL_PFPATH DESTDIR

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# Fails unless the two texts are the same.
same() {
    [ "$1" = "$2" ] || fail "$3: $(diff <(echo "$1") <(echo "$2"))"
}

# Fails unless all of these are regular files.
has_files() {
    local file
    for file in "$@"; do
        [ -f "$file" ] || fail "$file is missing"
    done
}

# All programs, quarl first, and the manual of each.
read -ra programs <<<"$(sed -n 's/^set(QUARL_PROGRAMS \(.*\))$/\1/p' "$source_dir/cmake/programs.cmake")"
pages=("${programs[@]/%/.1}")

sample=$source_dir/examples/sample.seed
expected=$("$build_dir/bin/quarl" "$sample" 2>&1)

# Runs a program of an installed tree from another folder, with nothing else to find its parameter file by.
runs() {
    local output
    output=$(cd "$scratch" && env -i "$1" "$sample" 2>&1) || fail "$1: $output"
    same "$expected" "$output" "$1 lists the sample differently"
}
