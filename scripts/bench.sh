#!/usr/bin/env bash
# Times the operations at every build, in nanoseconds a pixel, beside a loop that moves the same
# bytes. Arguments go to the benchmark, for example --benchmark_filter='over.*1920.*'.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh peers
cmake --preset native >/dev/null
cmake --build --preset native --target pictavo_bench
build/native/bin/pictavo_bench "$@"
