#!/usr/bin/env bash
# What the completion offers for the last of some words, and what the manual page says: shell_test.sh PROGRAM SCRIPTS
set -u # as a shell of a person, it does not end at the first failure
program=$1 scripts=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit
touch 'a clip.prm' types.txt

# shellcheck source=tool/shell/prm.bash
source "$scripts/prm.bash"

faults=0
offers() {
    local expected=$1 found
    shift
    COMP_WORDS=("$program" "$@") COMP_CWORD=$# COMPREPLY=()
    _prm
    found=$(printf '%s|' "${COMPREPLY[@]}")
    if [[ $found != "$expected|" ]]; then
        echo "prm $*: expected $expected, found $found" >&2
        faults=$((faults + 1))
    fi
}

offers 'plot' pl
offers '--help' --
offers 'keys' k
offers '--frames' eval --f
offers '--type|--types' ls --ty
offers '--view' plot clip.prm --v
offers '-h|--help|--json|--csv' diff -
offers 'a clip.prm' ls a
offers 'types.txt' ls --types t
offers 'types.txt' diff 'a clip.prm' ty
offers '' ls --types --ty
offers '' check --frames
offers '' nonsense --f

"$scripts/manual.sh" "$program" 1.2.3 >page
says() {
    grep -qx -- "$1" page || {
        echo "the page does not say: $1" >&2
        faults=$((faults + 1))
    }
}

says '\.TH PRM 1 "" "Prm 1\.2\.3" "User Commands"'
for command in $(_prm_commands "$program"); do says "\.SS prm .*\b$command\b.*"; done
says '\.B \\-\\-times\\-from <FILE>'
says 'Reads the frames from a file\.'
says '  prm eval project\.prm blur\.size \\-\\-frames 0\.\.100x5 \\-\\-view 1'
((faults == 0))
