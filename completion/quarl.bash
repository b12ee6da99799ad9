# Completion of quarl(1) for bash.

_quarl()
{
    local current=$2 previous=$3 i IFS=$'\n'
    COMPREPLY=()
    case $previous in
    -f) # a number
        return ;;
    -d)
        COMPREPLY=($(compgen -W $'sqlite://\npostgresql://' -- "$current"))
        [ ${#COMPREPLY[@]} -eq 0 ] || compopt -o nospace 2>/dev/null
        COMPREPLY+=($(compgen -f -- "$current"))
        return ;;
    esac
    # Options end at the first operand, and there is one operand.
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
        -*[df]) ((++i)) ;;
        -?*) ;;
        *) return ;;
        esac
    done
    case $current in
    -*) COMPREPLY=($(compgen -W $'-d\n-f\n-s\n-S\n-v\n-V' -- "$current")) ;;
    *) COMPREPLY=($(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _quarl quarl
