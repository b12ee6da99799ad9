# Completion of quarl-mseed(1) for bash.

_quarl_mseed()
{
    local current=$2 previous=$3 IFS=$'\n'
    COMPREPLY=()
    # "=" divides words.
    [ "$previous" != = ] || previous=${COMP_WORDS[COMP_CWORD - 2]}
    [ "$current" != = ] || { previous=${COMP_WORDS[COMP_CWORD - 1]} current=; }
    case $previous in
    --sds)
        COMPREPLY=($(compgen -d -- "$current"))
        return ;;
    --select | --start | --end)
        return ;;
    -d | --database)
        COMPREPLY=($(compgen -W $'sqlite://\npostgresql://' -- "$current"))
        [ ${#COMPREPLY[@]} -eq 0 ] || compopt -o nospace 2>/dev/null
        COMPREPLY+=($(compgen -f -- "$current"))
        return ;;
    esac
    case $current in
    -*) COMPREPLY=($(compgen -W $'-o\n-d\n-h\n-V\n--output\n--sds\n--split\n--select\n--start\n--end\n--renumber\n--database\n--help\n--version' \
        -- "$current")) ;;
    *) COMPREPLY=($(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _quarl_mseed quarl-mseed
