# Completion of quarl-json(1) for bash.

_quarl_json()
{
    local current=$2 previous=$3 before='' IFS=$'\n'
    COMPREPLY=()
    # "=" divides words.
    [ "$previous" != = ] || previous=${COMP_WORDS[COMP_CWORD - 2]}
    [ "$current" != = ] || { previous=${COMP_WORDS[COMP_CWORD - 1]} current=; }
    case $previous in
    -t | --types)
        [[ $current != *,* ]] || before=${current%,*},
        COMPREPLY=($(compgen -P "$before" -W $'data\nfile' -- "${current##*,}"))
        return ;;
    -d | --database)
        COMPREPLY=($(compgen -W $'sqlite://\npostgresql://' -- "$current"))
        [ ${#COMPREPLY[@]} -eq 0 ] || compopt -o nospace 2>/dev/null
        COMPREPLY+=($(compgen -f -- "$current"))
        return ;;
    esac
    case $previous in
    --select | --start | --end) return ;;
    esac
    case $current in
    -*) COMPREPLY=($(compgen -W $'-t\n-n\n-d\n-h\n-V\n--types\n--name\n--database\n--samples\n--select\n--start\n--end\n--epoch\n--utf8\n--schema\n--help\n--version' \
        -- "$current")) ;;
    *) COMPREPLY=($(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _quarl_json quarl-json
