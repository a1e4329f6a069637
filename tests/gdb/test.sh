#!/usr/bin/env bash
# What gdb shows once it has met the installed library: test.sh BUILD PREFIX CMAKE PROGRAM
set -euo pipefail
readonly build=$1 prefix=$2 cmake=$3 program=$4

if ! gdb -batch -nx -ex 'python import gdb.printing' 2>/dev/null; then
    echo "Skipped: no gdb with Python here."
    exit 77
fi

rm -rf "$prefix"
for component in Runtime Development; do
    "$cmake" --install "$build" --prefix "$prefix" --component "$component" >/dev/null
done

exhibits=(between never frame right noView moment nowhere exact)
shown=$(gdb -batch -nx -iex "add-auto-load-safe-path $prefix" \
    -iex "add-auto-load-scripts-directory $prefix/share/gdb/auto-load" \
    -ex "add-symbol-file $(find "$prefix" -name libprm.so)" "${exhibits[@]/#/-ex=print }" "$program")
diff -u - <(sed -n 's/^\$[0-9]* = //p' <<<"$shown") <<'TEXT'
Time(-0.1)
Time(invalid)
Frame(25)
View(1)
View(invalid)
Context(Time(48), View(1), flags 5)
Context(Time(invalid), View(0), flags 3)
Context(Time(-0.1), View(1), flags 3)
TEXT
