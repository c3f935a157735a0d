#!/usr/bin/env bash
# Sets up, checks the formatting, builds everything and runs every test.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh
scripts/format.sh --check
for preset in native sanitize threads windows; do
  echo "== Building $preset"
  scripts/build.sh "$preset"
done

# One run over the four builds, so that there is one summary.
echo 'subdirs(native sanitize threads windows)' > build/CTestTestfile.cmake
ctest --test-dir build --parallel 2 --output-on-failure
