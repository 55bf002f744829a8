#!/usr/bin/env bash
# Builds the library from nothing and prints what that costs, as a table for docs/performance.md. Times are CPU
# time of user and system together, which other work on the machine disturbs less than the clock.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-dependencies.sh cost

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
compiler=${CXX:-c++}

# Runs a compiler and adds a line to the file of costs: user and system time, peak memory, and the source, which
# comes last.
cat > "$work/measured" <<'END'
#!/usr/bin/env bash
exec env time -a -o "$(dirname "$0")/costs" -f "%U %S %M ${!#}" "$@"
END
chmod +x "$work/measured"

SECONDS=0
cmake -S . -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_COMPILER_LAUNCHER="$work/measured" \
    -DBUILD_TESTING=OFF -DZELM_BUILD_EXAMPLES=OFF > "$work/log"
cmake --build "$work/build" --parallel 2 >> "$work/log"
elapsed=$SECONDS
mv "$work/costs" "$work/sources"

echo '#include <zelm/zelm.h>' > "$work/umbrella.cpp"
for _ in 1 2 3; do
    "$work/measured" "$compiler" -std=c++17 -I. $(pkg-config --cflags jsoncpp) -fsyntax-only "$work/umbrella.cpp"
done
umbrella=$(awk '{print $1 + $2}' "$work/costs" | sort -n | sed -n 1p)

library=$(realpath "$work/build/zelm/libZelmFoundation.so")
strip -o "$work/stripped" "$library"

printf '| build at -O2, %s | |\n|---|---|\n' "$("$compiler" --version | head -1)"
awk '{t += $1 + $2} END {printf "| CPU time of all %d sources | %.0f s |\n", NR, t}' "$work/sources"
printf '| clock on two cores, configuring and linking included | %s s |\n' "$elapsed"
awk -v root="$PWD/" '{sub(root, "", $4); printf "%.1f s, %.0f MB `%s`\n", $1 + $2, $3 / 1024, $4}' "$work/sources" |
    sort -rn | sed -nE '1,5s/(.*) (`.*`)/| \2 | \1 |/p'
printf '| `#include <zelm/zelm.h>` | %.2f s |\n' "$umbrella"
size -A "$work/stripped" | awk -v bytes="$(stat -c %s "$work/stripped")" '
    BEGIN {printf "| the library, stripped | %.2f MB |\n", bytes / 1e6}
    /^\./ && $2 > 100000 {printf "| of that `%s` | %.2f MB |\n", $1, $2 / 1e6}'
