# Completion for bash: source this file, or put it where bash-completion looks for it.
#
# Commands, options and rules are those that the programs' own --help lists, so that nothing has to
# be kept up to date here.

_zan_words_of_help() {
    "$@" --help 2>/dev/null | grep -oE '^ +(-[a-z], )?--[a-z][a-z-]*' | grep -oE -- '--[a-z-]+'
}

_zan_commands() {
    "$1" --help 2>/dev/null | sed -n '/^Commands:$/,/^$/s/^  \([a-z]*\)  .*/\1/p'
}

_zan_rules() {
    "$1" check --list-rules 2>/dev/null | sed 's/ .*//'
}

_zan_complete() {
    local program=$1 word=$2 before=$3 command='' words=''
    if [ "${program##*/}" = imagetool ] && [ "$COMP_CWORD" -gt 1 ]; then
        command=${COMP_WORDS[1]}
    fi
    case $before in
        --rule) words="$(_zan_rules "$program") $(_zan_rules "$program" | sed 's/^/-/')" ;;
        --allow) words=$(_zan_rules "$program") ;;
        *)
            if [[ $word == -* ]]; then
                words=$(_zan_words_of_help "$program" ${command:+"$command"})
            elif [ "${program##*/}" = imagetool ] && [ -z "$command" ]; then
                words=$(_zan_commands "$program")
            fi
            ;;
    esac
    # Nothing here leaves it to bash, which completes names of files.
    COMPREPLY=()
    [ -z "$words" ] || mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -o default -F _zan_complete imagetool simulated-system demo-frontend
