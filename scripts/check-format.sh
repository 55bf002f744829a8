#!/usr/bin/env bash
# Every source is formatted as .clang-format says. With --fix, formats them.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=(--dry-run --Werror)
if [ "${1:-}" = --fix ]; then
    mode=(-i)
fi
git ls-files '*.h' '*.hpp' '*.cpp' | xargs clang-format "${mode[@]}"
