#!/usr/bin/env bash
# Builds the library and its sample host, and shows them at work on pictures, in out/.
#   scripts/demo.sh [BACKGROUND LAYER]
set -euo pipefail
if [ $# -ne 0 ] && [ $# -ne 2 ]; then
  echo "usage: scripts/demo.sh [BACKGROUND LAYER]" >&2
  exit 2
fi
pictures=()
for file in "$@"; do
  [ -f "$file" ] || { echo "demo.sh: there is no file $file" >&2; exit 2; }
  pictures+=("$(realpath "$file")")
done
cd "$(dirname "$(realpath "${BASH_SOURCE[0]}")")/.."

source scripts/sample_host.sh ''
if [ ${#pictures[@]} -eq 0 ]; then
  scripts/pictures.sh out/pictures
  pictures=("$PWD/out/pictures/china.jpg" "$PWD/out/pictures/flower.jpg")
fi

show() {
  echo
  "$@"
}
mkdir -p out
# The drive letter that Wine gives the root folder makes Windows paths of this system's.
show host info
show host blend "Z:${pictures[0]}" "Z:${pictures[1]}" out/blend.png --op opacity-ramp-keep --opacity 230 --ramp 1 0.1
show host demo out "Z:${pictures[0]}" "Z:${pictures[1]}"

echo
echo "The pictures are in $PWD/out: contact-sheet-*.png and blend.png"
