# Completion of quarl-stationxml(1) for bash.

_quarl_stationxml()
{
    local current=$2 previous=$3 IFS=$'\n'
    COMPREPLY=()
    # "=" divides words.
    [ "$previous" != = ] || previous=${COMP_WORDS[COMP_CWORD - 2]}
    [ "$current" != = ] || { previous=${COMP_WORDS[COMP_CWORD - 1]} current=; }
    case $previous in
    --level)
        COMPREPLY=($(compgen -W $'network\nstation\nchannel\nresponse' -- "$current"))
        return ;;
    --resp)
        COMPREPLY=($(compgen -d -- "$current"))
        return ;;
    --select | --start | --end | --source | --sender | --created)
        return ;;
    esac
    case $current in
    -*) COMPREPLY=($(compgen -W $'-o\n-h\n-V\n--output\n--level\n--select\n--start\n--end\n--source\n--sender\n--created\n--keep-all\n--resp\n--validate\n--help\n--version' -- "$current")) ;;
    *) COMPREPLY=($(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _quarl_stationxml quarl-stationxml
