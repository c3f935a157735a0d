#!/usr/bin/env bash
# Formats every source file; with --check only says which are not.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mapfile -t files < <(git ls-files --cached --others --exclude-standard -- '*.c' '*.h' '*.cpp' '*.inl')
if [ "${1:-}" = --check ]; then
  clang-format --dry-run -Werror "${files[@]}"
else
  clang-format -i "${files[@]}"
fi
