#!/usr/bin/env bash
# Installs what is missing, builds and runs the benchmarks: one table with our time, the peer's, and the ratio.
# Arguments go to the benchmark program, for example: scripts/bench.sh --benchmark_filter=slice
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-dependencies.sh bench
cmake --preset bench >&2
cmake --build --preset bench --parallel 2 --target zelm_bench >&2
exec build/bench/bench/zelm_bench --benchmark_repetitions=5 --benchmark_min_time=0.05 \
    --benchmark_enable_random_interleaving=true "$@"
