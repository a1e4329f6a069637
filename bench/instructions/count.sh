#!/usr/bin/env bash
# Counts the instructions of the main paths, for one run of each, with callgrind, and compares them with a table that
# begins with a stamp. Without a table, or where the stamp is another one, the counts are only printed, as a table.
# Usage: count.sh PROGRAM [TABLE]
set -euo pipefail
program=$1 table=${2-}
profile=$(mktemp)
counts=$(mktemp)
trap 'rm -f "$profile" "$counts"' EXIT

readonly runs=1000          # as often as the program does each
readonly most_percent=3     # by which a count may rise

"$program" --stamp >"$counts"
while IFS= read -r path; do
    QT_HASH_SEED=0 valgrind --tool=callgrind --toggle-collect=counted --callgrind-out-file="$profile" \
        "$program" "$path" >/dev/null 2>&1 || { echo "count.sh: no counts for '$path'" >&2; exit 1; }
    total=$(sed -n 's/^\(summary\|totals\): \([0-9]*\)$/\2/p' "$profile" | tail -n 1)
    printf '%6d  %s\n' $(((total + runs / 2) / runs)) "$path" >>"$counts"
done < <("$program")

cat "$counts"
if [[ -z $table ]]; then exit 0; fi
if [[ $(head -n 1 "$counts") != $(head -n 1 "$table") ]]; then
    echo "Nothing was compared: the table is that of another compiler, Qt or flags."
    exit 0
fi
awk -v most="$most_percent" '
    FNR == 1 { next }
    { path = $0; sub(/^ *[0-9]+  /, "", path) }
    NR == FNR { before[path] = $1; next }
    { seen[path] = 1 }
    !(path in before) { print "not in the table: " path; failed = 1; next }
    $1 > before[path] * (1 + most / 100) { print path ": " before[path] " instructions became " $1; failed = 1 }
    END {
        for (path in before) if (!(path in seen)) { print "counted no more: " path; failed = 1 }
        if (failed) print "Write the table anew if this is meant, with the reason in the same commit."
        exit failed
    }' "$table" "$counts"
