# Completion of quarl-html(1) for bash.

_quarl_html()
{
    local current=$2 IFS=$'\n'
    COMPREPLY=()
    case $current in
    -*) COMPREPLY=($(compgen -W $'-o\n-h\n-V\n--output\n--help\n--version' -- "$current")) ;;
    =) COMPREPLY=($(compgen -f)) ;;
    *) COMPREPLY=($(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _quarl_html quarl-html
