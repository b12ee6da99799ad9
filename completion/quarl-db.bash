# Completion of quarl-db(1) for bash.

_quarl_db()
{
    local current=$2 previous=$3 IFS=$'\n'
    COMPREPLY=()
    case $previous in
    -j | --jobs)
        COMPREPLY=($(compgen -W "$(seq 1 "$(nproc 2>/dev/null || echo 4)")" -- "$current"))
        return ;;
    --select) return ;; # a glob of channels
    esac
    case $current in
    -*) COMPREPLY=($(compgen -W $'-j\n--jobs\n-v\n--verbose\n--no-check\n--no-data\n--select\n--list\n--remove\n--prune\n-h\n--help\n-V\n--version' -- "$current")) ;;
    *) COMPREPLY=($(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _quarl_db quarl-db
