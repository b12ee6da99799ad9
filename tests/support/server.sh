# Shared by the scripts that run a command beside a private server. Each has start, which runs it in
# $directory and may fail, and stop.

# Runs a command without the server, and says why there is none.
skip()
{
    echo "$program: $server: $1" >&2
    shift
    exec "$@"
}

# Runs a command beside the server, which is stopped with this script however that ends. Where the
# server does not start, the command runs all the same; where it does, `announce` was called.
run_beside()
{
    directory=$(mktemp -d -p /tmp --suffix=".$program") || skip "no temporary directory" "$@"
    command=
    trap '[ -z "$command" ] || kill "$command" 2>/dev/null; exit 143' INT TERM HUP
    trap 'trap "" INT TERM HUP; stop >/dev/null 2>&1' EXIT

    # Stops the server when this script is killed outright.
    (
        trap '' INT TERM HUP
        cd /
        tail --pid=$$ -f /dev/null
        [ ! -d "$directory" ] || stop
    ) </dev/null >/dev/null 2>&1 &

    local said
    if said=$(start 2>&1 </dev/null); then
        announce
    else
        echo "$program: $server: $(tail -n 3 <<<"$said" | tr '\n' ' ')" >&2
    fi

    # In the background, so that a signal ends the wait at once.
    "$@" <&0 &
    command=$!
    wait "$command"
}

[ $# -gt 0 ] || { echo "usage: $program command [argument]..." >&2; exit 2; }
