#!/usr/bin/env bash
# Fuzzes the operations for long. What it finds is printed and lies in build/fuzz.
#   scripts/fuzz.sh MINUTES [ARGUMENTS OF LIBFUZZER]
set -euo pipefail
minutes=${1:?usage: scripts/fuzz.sh MINUTES}
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/build.sh sanitize fuzz_operations
mkdir -p build/fuzz/corpus
cd build/fuzz
../sanitize/bin/fuzz_operations -max_total_time=$((60 * minutes)) -max_len=160 -timeout=60 -print_final_stats=1 \
  "${@:2}" corpus
