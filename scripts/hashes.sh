#!/usr/bin/env bash
# Records anew the hashes of the bytes that operations give (tests/kernels/hashes.def), and says
# which changed. A changed hash is a changed byte of the product: say why in the commit.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
table=tests/kernels/hashes.def

scripts/build.sh native kernel_tests
new=$(mktemp)
trap 'rm -f "$new"' EXIT
build/native/bin/kernel_tests --gtest_also_run_disabled_tests --gtest_filter=Recorded.DISABLED_Print |
  grep '^    {' > "$new"
if cmp -s "$table" "$new"; then
  echo "No hash has changed."
else
  diff "$table" "$new" | grep '^[<>]' || true
  cp "$new" "$table"
fi
