#!/usr/bin/env bash
# Installs a build and builds a project of somebody else's against what was installed, twice: through CMake and through
# pkg-config; then the first program of the README, with the lines given there. The tree is staged and stays there, away
# from the prefix that it was installed for.
set -euo pipefail
readonly build=$1 work=$2 cmake=$3 compiler=$4 generator=$5
source=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
readonly source prefix=$work/stage/opt/prm

rm -rf "$work"
mkdir -p "$work"
DESTDIR=$work/stage "$cmake" --install "$build" --prefix /opt/prm >"$work/install.log"
libraries=$(dirname -- "$(find "$prefix" -name libprm.so)")
export LD_LIBRARY_PATH=$libraries

with_cmake() {
    "$cmake" -S "$source" -B "$work/cmake" -G "$generator" -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Debug
    "$cmake" --build "$work/cmake"
}

with_pkg_config() {
    local flags
    flags=$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs prm)
    # shellcheck disable=SC2086 # words, on purpose
    "$compiler" -std=c++17 "$source/main.cpp" -o "$work/plain" $flags
}

build_first_program() {
    cp "$source/../../examples/first_parameter.cpp" "$work"
    cd "$work"
    export PKG_CONFIG_PATH=$libraries/pkgconfig
    # shellcheck disable=SC2046 # words, on purpose
    # [pkg_config]
    "$(pkg-config --variable=host_bins Qt5Core)/moc" first_parameter.cpp -o first_parameter.moc
    c++ -std=c++17 first_parameter.cpp $(pkg-config --cflags --libs prm) -o first
    # [pkg_config]
}

run() {
    diff -u "$source/expected.txt" <("$1")
}

with_cmake >"$work/cmake.log" 2>&1 &
cmake_job=$!
with_pkg_config
wait "$cmake_job" || { cat "$work/cmake.log" && exit 1; }
run "$work/plain"
run "$work/cmake/consumer"
(build_first_program)
"$work/first" >/dev/null
"$prefix/bin/prm" --help >/dev/null
