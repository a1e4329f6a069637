#!/usr/bin/env bash
# The order of the virtual operations, which hosts that were built before rely on: no line of
# tests/data/virtual_operations.txt moves or goes, new ones follow the others of their class. --write adds them there.
set -euo pipefail
cd -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")"
expected=tests/data/virtual_operations.txt

# Without comments and preprocessing, one declaration a line.
declarations() {
    sed -E 's|//.*||; /^ *#/d' "$1" | tr -s '\n ' ' ' | sed -E 's/[;{}]/&\n/g; s/(public|protected|private)( Q_SLOTS)?: /\n/g; s/[^\n]*(class PRM_EXPORT)/\1/g'
}

operations() {
    local header
    for header in prm/{BasicParameter,ParameterWithoutType,Parameter,SerialisedKeyframe,StaticParameter,ParameterSet}.h \
        host/bsc/MementoUndoable.h; do
        echo "$header"
        declarations "$header" | sed -nE '/\b(virtual|override)\b/ s/^ *(.*[^ ]) *[;{]$/    \1/p'
    done
}

if [[ ${1-} == --write ]]; then
    operations >"$expected"
else
    diff -u "$expected" <(operations)
fi
