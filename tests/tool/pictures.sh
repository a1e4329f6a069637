#!/usr/bin/env bash
# Makes the pictures of the documents anew and compares them: pictures.sh PROGRAM. With --write they are replaced.
set -euo pipefail
program=$(readlink -f -- "$1") wanted=${2-}
root=$(dirname -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$root"/tests/data/tool/swing.prm "$work"
cd "$work"
prm() { "$program" "$@"; }

# [editing]
prm bake swing.prm swing --in-place
prm simplify swing.prm swing.simplified --error 0.1 --in-place
prm plot swing.prm swing --width 640 --height 240 -o editing.svg
# [editing]

for picture in *.svg; do
    if [[ $wanted == --write ]]; then
        cp "$picture" "$root/docs/$picture"
    else
        cmp "$picture" "$root/docs/$picture"
    fi
done
