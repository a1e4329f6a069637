# Completion of prm for bash. What there is to choose from is asked of prm itself, so this never goes out of date. What is
# typed, and what a file holds, goes from hand to hand as data: nothing of it is evaluated.

# The words up to the cursor. Bash parts them at = and :, which paths and options may have.
_prm_words() {
    local rest=${COMP_LINE:0:COMP_POINT} word blank i
    words=()
    for ((i = 0; i <= COMP_CWORD; i++)); do
        blank=${rest%%[![:blank:]]*}
        rest=${rest#"$blank"}
        word=${COMP_WORDS[i]}
        if ((${#word} > ${#rest})); then word=$rest; fi
        rest=${rest#"$word"}
        if [[ -z $blank && -n $word ]] && ((i > 0)); then words[-1]+=$word; else words+=("$word"); fi
    done
    part=$word
    if [[ $part == [=:] ]]; then part=; fi
}

_prm() {
    local words part offers
    _prm_words
    readarray -t offers < <("${words[0]/#\~/$HOME}" complete "${#part}" "${words[@]:1}" 2>/dev/null)
    COMPREPLY=("${offers[@]:1}")
    case ${offers[0]-} in
        files) compopt -o default ;;
        *nospace) compopt -o nospace ;;
    esac
}

complete -F _prm prm
