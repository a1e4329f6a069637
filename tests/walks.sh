#!/usr/bin/env bash
# The documents walk through the code by name. What they name exists: every word of code between backticks or in an
# indented block is found in the sources, `Class::member` in a source that knows both, and every file in the tree.
set -euo pipefail
cd -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")"

readarray -t documents < <(find . -maxdepth 1 -name '*.md' ! -name CHANGELOG.md -printf '%P\n'; find docs -maxdepth 1 -name '*.md' | sort)
readarray -t sources < <(find prm host tool python examples tests fuzz bench cmake dev CMakeLists.txt -regextype egrep -regex '.*\.(h|hpp|cpp|py|pyi|cmake|sh|txt|in)|dev' | sort)
words=$(mktemp)
trap 'rm -f "$words"' EXIT

# Comments do not keep a name alive.
sed -E 's#//.*##' "${sources[@]}" | grep -oE '[A-Za-z_][A-Za-z_0-9]*' | sort -u >"$words"

# document:line:name, for each name in code: a file, a qualified name, or one word as only code has them.
named() {
    awk '
        function take(text,   name) {
            while (match(text, /[A-Za-z_~][A-Za-z_0-9\/]*((::|\.|-)[A-Za-z_~][A-Za-z_0-9\/]*)*\(?/)) {
                name = substr(text, RSTART, RLENGTH)
                text = substr(text, RSTART + RLENGTH)
                if (name ~ /\.(h|hpp|cpp|sh|md)$/ || name ~ /::/ || name ~ /[a-z0-9][A-Z]/ || name ~ /^[A-Z]+_[A-Z_]+$/ || name ~ /^[A-Za-z_0-9]+\($/) {
                    sub(/\($/, "", name)
                    print FILENAME ":" FNR ":" name
                }
            }
        }
        FNR == 1 { fenced = 0 }
        /^```/ { fenced = !fenced; next }
        fenced { next }
        /^    / { take($0); next }
        {
            text = $0
            gsub(/\]\([^)]*\)/, "", text)
            while (match(text, /`[^`]+`/)) {
                code = substr(text, RSTART + 1, RLENGTH - 2)
                text = substr(text, RSTART + RLENGTH)
                if (code ~ /^[a-z_]+$/) print FILENAME ":" FNR ":" code
                take(code)
            }
        }' "${documents[@]}"
}

is_file() {
    [[ -n $(find . -path ./build -prune -o -type f -path "*/$1" -print -quit) ]]
}

is_word() {
    grep -qxF -- "$1" "$words"
}

# The members of a chain each stand in one source with the name before.
is_qualified() {
    local before=${1%%::*} rest=${1#*::} name
    is_word "$before" || return 1
    while [[ -n $rest ]]; do
        name=${rest%%::*}
        grep -lwF -- "$before" "${sources[@]}" | xargs -r grep -qwF -- "$name" || return 1
        if [[ $rest == *::* ]]; then rest=${rest#*::}; else rest=; fi
        before=$name
    done
}

exists() {
    case $1 in
        *.h | *.hpp | *.cpp | *.sh | *.md) is_file "$1" ;;
        *::*) is_qualified "${1//\~/}" ;;
        *[.-/]*) true ;; # a path of a parameter, a command
        *) is_word "$1" ;;
    esac
}

count=0 faults=0
declare -A known
while IFS=: read -r document line name; do
    count=$((count + 1))
    if [[ -z ${known[$name]-} ]]; then
        if exists "$name"; then known[$name]=yes; else known[$name]=no; fi
    fi
    if [[ ${known[$name]} == no ]]; then
        echo "$document:$line: there is no '$name'" >&2
        faults=$((faults + 1))
    fi
done < <(named)
echo "$count names, $faults faults"
((count > 0 && faults == 0))
