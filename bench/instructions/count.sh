#!/usr/bin/env bash
# Counts the instructions of the main paths, for one run of each, with callgrind. Usage: count.sh PROGRAM
set -euo pipefail
program=$1
profile=$(mktemp)
trap 'rm -f "$profile"' EXIT

readonly runs=1000 # as often as the program does each
while IFS= read -r path; do
    QT_HASH_SEED=0 valgrind --tool=callgrind --toggle-collect=counted --callgrind-out-file="$profile" \
        "$program" "$path" >/dev/null 2>&1 || { echo "count.sh: no counts for '$path'" >&2; exit 1; }
    total=$(sed -n 's/^\(summary\|totals\): \([0-9]*\)$/\2/p' "$profile" | tail -n 1)
    printf '%6d  %s\n' $(((total + runs / 2) / runs)) "$path"
done < <("$program")
