#!/usr/bin/env bash
# Builds the API reference and the guides into build/docs/html, with pictures that the sample host
# makes from photographs. A warning is an error, and so is a dead link.
#   scripts/docs.sh [PICTAVO-HOST.EXE]     without it, sets up and builds one
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export LC_ALL=C.UTF-8

host=${1:-build/windows/bin/pictavo-host.exe}
if [ $# -eq 0 ]; then
  scripts/setup.sh
  cmake --preset windows >/dev/null
  cmake --build --preset windows --target pictavo_host
fi
host=$(realpath "$host") wine=$PWD/scripts/wine.sh
mkdir -p build/docs/pictures
[ -f out/pictures/china.jpg ] || scripts/pictures.sh out/pictures >/dev/null

pages=("$PWD"/docs/{effects,keying,preview-and-export}.md) photographs=$PWD/out/pictures
(
  cd build/docs/pictures
  "$wine" "$host" resize "Z:$photographs/china.jpg" background.png --size 480x320 --method box
  "$wine" "$host" resize "Z:$photographs/flower.jpg" layer.png --size 480x320 --method box
  # The pages' own commands, in their order.
  sed -n 's/.*<br>`\(.*\)` |.*/\1/p' "${pages[@]}" | while read -ra arguments; do
    run=$wine
    [[ ${arguments[0]} != gpu-* ]] || run=${wine%.sh}_display.sh
    "$run" "$host" "${arguments[@]}" </dev/null
  done
) >/dev/null

# From copies: Doxygen loses the links between pages where a folder's name has a space.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -r --parents include docs samples/recipes scripts/docs_filter.py ./*.md "$scratch"
cp -r build/docs/pictures "$scratch"
version=$(sed -n 's/^project(Pictavo VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
(cd "$scratch" && PICTAVO_VERSION=$version doxygen docs/Doxyfile)
rm -rf build/docs/html
mv "$scratch/html" build/docs/html
tests/docs/links_test.py build/docs/html
echo "$PWD/build/docs/html/index.html"
