#!/usr/bin/env bash
# Who may include whom: a file includes only files of its own level or of lower ones, and a folder is a level.
set -euo pipefail
cd -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")"

declare -A room_levels=(
    [host]=1 [prm/math]=1 [prm/thread]=1
    [prm/value]=2 [prm/text]=2
    [prm/track]=3 [prm/change]=3
    [prm/untyped]=4
    [prm/edits]=5
    [prm/parameter]=6
    [prm/set]=7 [prm/compound]=7 [prm/project]=7
    [prm/document]=8
    [prm/merge]=9 [prm/exchange]=9
    [tool]=10 [python]=10 [examples]=10
)

# Sources with an operation that takes a set or a compound although their room lies below: each with what it needs.
declare -A upward=(
    [prm/text/ProjectFileVersion.cpp]="prm/ParameterSet.h prm/StaticParameter.h"
    [prm/untyped/BasicParameter.cpp]="prm/ParameterSet.h"
    [prm/untyped/State.cpp]="prm/ParameterSet.h"
    [prm/edits/KeyframeMoves.cpp]="prm/ParameterSet.h"
    [prm/edits/ParameterSettingEdits.cpp]="prm/ParameterSet.h"
    [prm/edits/MoveKeyframeEdit.cpp]="prm/ParameterSet.h prm/CompoundParameter.h"
    [prm/edits/ParameterRetimeEdit.cpp]="prm/ParameterSet.h prm/CompoundParameter.h"
)

faults=0
fault() {
    echo "$1" >&2
    faults=$((faults + 1))
}

own_includes() {
    sed -nE '/\.moc"/d; s/^[[:space:]]*#[[:space:]]*include[[:space:]]*"([^"]+)".*/\1/p' "$1"
}

declare -A known_levels=()

# Sets `level`; 0 for a file in no room.
look_up() {
    level=${known_levels[$1]-}
    if [[ -n $level ]]; then return; fi
    case $1 in
        prm/*/*) level=${room_levels[$(dirname -- "$1")]-0} ;;
        prm/*) look_up_public "$1" ;;
        *) level=${room_levels[${1%%/*}]-0} ;;
    esac
    known_levels[$1]=$level
}

# A public header has the level of the room that holds its bodies; without bodies, of the highest header it includes.
look_up_public() {
    local header=$1 name bodies included highest=1
    name=$(basename -- "${header%.*}")
    bodies=(prm/*/"$name".cpp)
    if [[ -f ${bodies[0]} ]]; then
        look_up "${bodies[0]}"
        return
    fi
    for included in $(own_includes "$header"); do
        look_up "$included"
        if ((level > highest)); then highest=$level; fi
    done
    level=$highest
}

# The tool is one face of the rooms that read project text without an application.
is_tools_own() {
    [[ $1 == tool/* && ($2 == prm/document/* || $2 == prm/exchange/*) ]]
}

check_file() {
    local file=$1 own included
    look_up "$file"
    own=$level
    if ((own == 0)); then
        fault "$file: lies in a folder that is no level; give the folder one in tests/levels.sh"
        return
    fi
    if [[ $file == *.h || $file == *.hpp ]]; then
        grep -q '^#pragma once' "$file" || fault "$file: no #pragma once"
    fi
    for included in $(own_includes "$file"); do
        look_up "$included"
        if ((level == 0)); then
            fault "$file: includes \"$included\", which lies in no room (paths start at the repository root)"
        elif ((level > own)) && [[ " ${upward[$file]-} " != *" $included "* ]]; then
            fault "$file (level $own) includes \"$included\" (level $level)"
        elif ((own == 10)) && [[ $included == prm/*/* ]] && ! is_tools_own "$file" "$included"; then
            fault "$file: programs use public headers only, not \"$included\""
        fi
    done
}

readarray -t files < <(find host prm tool python examples \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' \) | sort)
for file in "${files[@]}"; do check_file "$file"; done
for file in "${!upward[@]}"; do
    [[ -f $file ]] || fault "$file: has an exception in tests/levels.sh and does not exist"
done

readarray -t strays < <(find prm -maxdepth 1 -name '*.cpp')
for file in "${strays[@]}"; do fault "$file: only headers lie directly in prm/"; done

echo "${#files[@]} files, $faults faults"
((${#files[@]} > 0 && faults == 0))
