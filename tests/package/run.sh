#!/usr/bin/env bash
# Installs a build into an empty directory and builds and runs a stranger's program against it, once through
# find_package and once through pkg-config.
#   run.sh BUILD_DIRECTORY CXX_COMPILER
set -euo pipefail

source_dir=$(cd "$(dirname "$0")" && pwd)
build_dir=$1
compiler=$2
work=$build_dir/package-test
rm -rf "$work"
mkdir -p "$work"

cmake --install "$build_dir" --prefix "$work/installed" >"$work/install.log"

cmake -S "$source_dir" -B "$work/consumer" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_PREFIX_PATH="$work/installed" >"$work/configure.log"
cmake --build "$work/consumer" >"$work/build.log"
"$work/consumer/stranger"

pc_dir=$(dirname "$(find "$work/installed" -name zelm-foundation.pc)")
export PKG_CONFIG_PATH=$pc_dir
# shellcheck disable=SC2046
"$compiler" -std=c++17 "$source_dir/main.cpp" -o "$work/stranger" \
    $(pkg-config --cflags --libs zelm-foundation) -Wl,-rpath,"$(cd "$pc_dir/.." && pwd)"
"$work/stranger"
