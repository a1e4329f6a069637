#!/usr/bin/env bash
# Types what a person would in a copy of a folder, and compares what comes of it: session.sh PROGRAM FOLDER SESSION
# Below each "$ command" stands what it prints ("\" where its last line has no end), behind "! " what it complains of,
# in brackets its exit code unless that is 0. With --write as fourth word the session is written anew, to be looked at.
set -u
program=$(readlink -f -- "$1") folder=$2 session=$(readlink -f -- "$3") wanted=${4-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -R "$folder" "$work/folder"
scripts=$(dirname -- "$(readlink -f -- "$0")")/../../tool/shell
cd "$work/folder" || exit
# shellcheck source=tool/shell/prm.bash
source "$scripts/prm.bash"
export HOME="$PWD" XDG_CONFIG_HOME= GIT_CONFIG_NOSYSTEM=1 PATH="$work:$PATH"
ln -s "$program" "$work/prm"
# A page of the documents is a session by its indented lines.
page=$session
if [[ $page == *.md ]]; then
    session=$work/page.session
    sed -n 's/^    //p' "$page" >"$session"
fi

prm() { "$program" "$@"; }
# An animation of one layer, whose opacity is given, and its values at some frames.
opacity() {
    printf '{"fr": 25, "layers": [{"nm": "a", "ks": {"o": %s}}]}' "$1" >given.json
    prm import given.json -o new.prm
    if [[ -n ${2-} ]]; then prm eval new.prm 'a.*' --frames "$2" --csv; fi
}
# A commit of a project text, with an edit of it.
commit() { sed "$1" scene.prm >../edited && cp ../edited scene.prm && git commit -qam "$2"; }
manual() { "$scripts/manual.sh" "$program" 1.2.3 "$work/man"; }
lint() { if command -v groff >/dev/null; then groff -man -ww -z -Tutf8 "$@"; fi; }
# What the shell offers after the beginning of a command line. It parts words as bash does.
offers() {
    COMP_LINE="prm $1" COMP_POINT=$((${#1} + 4)) COMPREPLY=()
    readarray -t COMP_WORDS < <(grep -oE '[^ =:]+|[=:]+' <<<"$COMP_LINE")
    if [[ $COMP_LINE == *' ' ]]; then COMP_WORDS+=(''); fi
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _prm
    if ((${#COMPREPLY[@]})); then printf '%s\n' "${COMPREPLY[@]}"; fi
}
compopt() { echo "($*)"; }
# The words that an interactive bash makes of typed keys.
typed() {
    printf 'source %q; show() { printf "<%%s>" "$@" >words; }\n%b\001show \nexit\n' "$scripts/prm.bash" "$1" |
        timeout 20 script -qec 'bash --norc --noprofile -i' /dev/null >/dev/null
    cat words && echo && rm words
}

replay() {
    local line status
    while IFS= read -r line; do
        printf '%s\n' "$line"
        eval "${line#\$ }" >"$work/printed" 2>"$work/complaints" </dev/null
        status=$?
        cat "$work/printed"
        if [[ -n $(tail -c 1 "$work/printed") ]]; then printf "%s\n" "\\"; fi
        sed 's/^/! /' "$work/complaints"
        if ((status != 0)); then echo "[$status]"; fi
    done < <(grep -a '^\$ ' "$session")
}

if [[ $wanted == --write ]]; then
    replay >"$work/replayed" && cp "$work/replayed" "$session"
else
    diff -au "$session" <(replay)
fi
