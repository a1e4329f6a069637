#!/usr/bin/env bash
# Who may include whom: a header includes only headers of its own level or of lower ones. Sources may include any.
set -euo pipefail
cd -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")"

# Every header stands here, or matches a pattern here, once: behind its level, below the folder.
levels() {
    cat <<'TABLE'
1 host *
1 prm/math *
1 prm Export Prm
1 prm/detail Inline KeyframeRevision Mortal ReaderSlots RecursiveMutex
2 prm Time Context AnimationState ProxyScale View Interpolation KeyframeData CurveKinds ValueType ViewInterpolation
2 prm ParameterStrings ProjectFileVersion TextStreamOperators
2 prm/detail BezierEasing CurveShapes KeyframeText LineParts NumberText PlainNumbers TextTokens UniqueName
3 prm Views ParameterChange
3 prm/detail KeyframeSearch KeyframeInsertion KeyframeStretch SourceViews
4 prm BasicParameter ParameterWithoutType ParameterWithoutTypeBase NumericParameterWithoutType SerialisedKeyframe
4 prm/detail KeyframeMoves PartialSnapshot ReadingScope Restoring StateAt
5 prm ParameterEdits MoveKeyframeEdit
6 prm Parameter CurveParameter NumericParameter
6 prm/parameter *
6 prm/detail FastViewMap
7 prm StaticParameter MovedParameter ParameterTree ParameterSet CompoundParameter ProjectFile
7 prm/detail CompoundWalk Invariants
8 tool *
TABLE
}

declare -a patterns=() pattern_levels=()
while read -r level folder names; do
    set -f
    for name in $names; do
        pattern_levels+=("$level")
        patterns+=("$folder/$name.h*")
    done
    set +f
done < <(levels)

# Sets `level`; 0 for a file that the table does not name.
look_up() {
    local i
    level=0
    for i in "${!patterns[@]}"; do
        # shellcheck disable=SC2053 # a pattern, on purpose
        if [[ $1 == ${patterns[$i]} ]]; then
            level=${pattern_levels[$i]}
            return
        fi
    done
}

faults=0
fault() {
    echo "$1" >&2
    faults=$((faults + 1))
}

own_includes() {
    sed -nE 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*"([^"]+)".*/\1/p' "$1"
}

# A public header needs a helper only for a member or a base class.
check_use_of_detail() {
    if [[ $1 == prm/detail/* || $1 == *.hpp ]]; then return; fi
    grep -qE '(class|struct).*:.*detail::|using .*detail::|detail::.* m_[A-Za-z]+.*;' "$1" ||
        fault "$1: includes prm/detail/ but has no member or base class from there"
}

check_header() {
    local header=$1 own included
    look_up "$header"
    own=$level
    if ((own == 0)); then
        fault "$header: stands at no level; give it one in tests/levels.sh"
        return
    fi
    grep -q '^#pragma once' "$header" || fault "$header: no #pragma once"
    for included in $(own_includes "$header"); do
        if [[ $included == prm/detail/* ]]; then check_use_of_detail "$header"; fi
        look_up "$included"
        if ((level == 0)); then
            fault "$header: includes \"$included\", which stands at no level (paths start at the repository root)"
        elif ((level > own)); then
            fault "$header (level $own) includes \"$included\" (level $level)"
        fi
    done
}

check_host_file() {
    if own_includes "$1" | grep -q '^prm/'; then fault "$1: the host's side never includes prm/"; fi
}

check_program_file() {
    if own_includes "$1" | grep -q '^prm/detail/'; then fault "$1: programs use public headers only"; fi
}

readarray -t headers < <(find host prm tool -name '*.h' -o -name '*.hpp' | sort)
readarray -t host_files < <(find host -name '*.h' -o -name '*.cpp' | sort)
readarray -t program_files < <(find tool examples -name '*.h' -o -name '*.cpp' | sort)
for file in "${headers[@]}"; do check_header "$file"; done
for file in "${host_files[@]}"; do check_host_file "$file"; done
for file in "${program_files[@]}"; do check_program_file "$file"; done

echo "${#headers[@]} headers, $faults faults"
((${#headers[@]} > 0 && faults == 0))
