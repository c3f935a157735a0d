#!/usr/bin/env bash
# Times the operations at every build, in nanoseconds a pixel, beside a loop that moves the same
# bytes. Arguments go to the benchmark, for example --benchmark_filter='over.*1920.*'.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# The tables alone go to the standard output, for scripts/performance.py.
scripts/setup.sh peers >&2
scripts/build.sh native pictavo_bench >&2
build/native/bin/pictavo_bench "$@"
