# Completion of prm for bash. What there is to choose from is asked of prm itself, so this never goes out of date.

_prm_commands() {
    "$1" --help 2>/dev/null | awk '/^Commands:/ { inside = 1; next } inside && !/^  / { exit } inside { print $1 }'
}

# The options of a command; those that take a value end in "=".
_prm_options() {
    "$1" "$2" --help 2>/dev/null | awk '
        /^  -/ {
            sub(/^ +/, "")
            sub(/   .*/, "")
            takes = sub(/ <.*/, "") ? "=" : ""
            count = split($0, names, /, /)
            for (i = 1; i <= count; i++) { sub(/ .*/, "", names[i]); print names[i] takes }
        }'
}

_prm_takes_value() {
    [[ $'\n'$(_prm_options "$1" "$2")$'\n' == *$'\n'"$3="$'\n'* ]]
}

_prm() {
    local program=${COMP_WORDS[0]/#\~/$HOME} command=${COMP_WORDS[1]-} word=${COMP_WORDS[COMP_CWORD]}
    local before=${COMP_WORDS[COMP_CWORD - 1]} choices

    if ((COMP_CWORD == 1)); then
        choices="$(_prm_commands "$program") --help"
    elif [[ $word == -* ]] && ! _prm_takes_value "$program" "$command" "$before"; then
        choices=$(_prm_options "$program" "$command")
        choices=${choices//=/}
    else
        compopt -o filenames 2>/dev/null
        readarray -t COMPREPLY < <(compgen -f -- "$word")
        return
    fi
    readarray -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}

complete -F _prm prm
