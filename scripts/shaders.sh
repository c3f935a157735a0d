#!/usr/bin/env bash
# Compiles the compute shaders; with --check only says whether their bytecode belongs to them.
# Needed only after a change in src/d3d11/shaders: the bytecode is kept beside the sources.
#
# The compiler is the program that PICTAVO_HLSL_COMPILER names, or hlsl-compiler on the path:
#   COMPILER INPUT.hlsl OUTPUT.dxbc ENTRY PROFILE
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../src/d3d11/shaders"
export LC_ALL=C
sums=compiled/checksums.sha256

checksums() { sha256sum -- *.hlsl *.hlsli compiled/*.dxbc; }

if [ "${1:-}" = --check ]; then
  checksums | diff $sums - && exit
  echo "shaders.sh: the bytecode is not that of these sources; run scripts/shaders.sh" >&2
  exit 1
fi

compiler=${PICTAVO_HLSL_COMPILER:-hlsl-compiler}
mkdir -p compiled
rm -f compiled/*.dxbc
for source in *.hlsl; do
  # An entry point stands below its group size and has its bytecode named after it.
  for entry in $(sed -n '/^\[numthreads/{n;s/^void \([A-Za-z]*\)(.*/\1/p}' "$source"); do
    "$compiler" "$source" "compiled/$entry.dxbc" "$entry" cs_5_0
  done
done
checksums > $sums
