#!/usr/bin/env bash
# Installs what is missing, builds the library with tests and examples, and runs all tests.
# Further arguments go to ctest, for example: scripts/test.sh -R json
set -euo pipefail
cd "$(dirname "$0")/.."

echo "== Dependencies"
scripts/install-dependencies.sh test
echo "== Build (build/release)"
cmake --preset release
cmake --build --preset release --parallel 2
echo "== Tests"
ctest --preset release --parallel 2 "$@"
