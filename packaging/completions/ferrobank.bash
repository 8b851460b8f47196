# Completion of the command ferrobank for bash.

_ferrobank() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command='' word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $word == -* ]] || { command=$word && break; }
    done
    COMPREPLY=()
    if [[ $previous == --export ]]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
        compopt -o filenames
        return
    fi
    case $command in
    '') word='status check du share serve restart export uninstall --help --version' ;;
    status) word='--json --help' ;;
    check) word='--json --full --acknowledge --help' ;;
    du)
        word='--json --help'
        if [[ $current != -* ]]; then
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            compopt -o filenames
            return
        fi
        ;;
    export)
        word='--help'
        if [[ $current != -* ]]; then
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            compopt -o filenames
            return
        fi
        ;;
    share) word='now pause resume --help' ;;
    restart) word='--keep-mounted --help' ;;
    uninstall) word='--export --delete-store --yes --help' ;;
    *) word='--help' ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$word" -- "$current")
}

complete -F _ferrobank ferrobank
