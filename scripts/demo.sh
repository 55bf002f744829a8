#!/usr/bin/env bash
# The main job: installs what is missing, builds the library and the example `measurement` (build/demo), and runs it.
#   scripts/demo.sh [--csv] [--output PATH] [FILE]
# FILE is a Touchstone 1.x file (.s1p to .s99p); without one the example's own file is taken. The file becomes a
# document that is saved, loaded and compared, and then a live one: a marker follows a parameter through changes,
# saving and loading. Standard output carries the report, or with --csv the table, and nothing else; what
# installing and building have to say goes to standard error, and is nothing once all is built. The exit code is
# 1 if anything is not as it must be. The document is kept at PATH; without one it lies in a scratch directory
# below the directory for temporary files, which the report names, until the program runs again.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/demo

is_built() {
    [ -f "$build/build.ninja" ] && ninja -C "$build" -n measurement 2>/dev/null | grep -q 'no work to do'
}

"$root/scripts/install-dependencies.sh" build >&2
if ! is_built; then
    {
        echo "== Build (build/demo)"
        cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" \
            -DBUILD_TESTING=OFF -DZELM_BUILD_EXAMPLES=ON
        cmake --build "$build" --target measurement --parallel "$(nproc)"
        echo "== Run"
    } >&2
fi

exec "$build/examples/measurement/measurement" "$@"
