# Completion of quarl-check(1) for bash.

_quarl_check()
{
    local current=$2 previous=$3 IFS=$'\n' before=
    COMPREPLY=()
    # "=" divides words.
    [ "$previous" != = ] || previous=${COMP_WORDS[COMP_CWORD - 2]}
    [ "$current" != = ] || { previous=${COMP_WORDS[COMP_CWORD - 1]} current=; }
    case $previous in
    --rules | --ignore) # names with commas between them
        [[ $current != *,* ]] || before=${current%,*},
        COMPREPLY=($(compgen -P "$before" -W "$(quarl-check --list 2>/dev/null | cut -d ' ' -f 1)" -- "${current##*,}"))
        compopt -o nospace 2>/dev/null
        return ;;
    --baseline)
        COMPREPLY=($(compgen -f -- "$current"))
        return ;;
    esac
    case $current in
    -*) COMPREPLY=($(compgen -W $'-h\n-V\n--rules\n--ignore\n--baseline\n--summary\n--json\n--list\n--help\n--version' -- "$current")) ;;
    *) COMPREPLY=($(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _quarl_check quarl-check
