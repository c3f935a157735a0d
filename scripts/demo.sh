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

scripts/setup.sh
cmake --preset windows >/dev/null
cmake --build --preset windows --target pictavo_host
if [ ${#pictures[@]} -eq 0 ]; then
  scripts/pictures.sh out/pictures
  pictures=("$PWD/out/pictures/china.jpg" "$PWD/out/pictures/flower.jpg")
fi

# Wine reads file names in the locale's character set.
export LC_ALL=C.UTF-8
host=build/windows/bin/pictavo-host.exe
show() {
  echo
  "$@"
}
mkdir -p out
# The drive letter that Wine gives the root folder makes Windows paths of this system's.
show scripts/wine.sh $host info
show scripts/wine.sh $host blend "Z:${pictures[0]}" "Z:${pictures[1]}" out/blend.png --op opacity-ramp-keep --opacity 230 --ramp 1 0.1
# Direct3D needs a display.
show scripts/wine_display.sh $host demo out "Z:${pictures[0]}" "Z:${pictures[1]}"

echo
echo "The pictures are in $PWD/out: contact-sheet-*.png and blend.png"
