#!/usr/bin/env bash
# Builds the API reference and the guides into build/docs/html, with pictures that the sample host
# makes from photographs. A warning is an error, and so is a dead link.
#   scripts/docs.sh [PICTAVO-HOST.EXE]     without it, sets up and builds one
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/sample_host.sh "${1-}"
scripts/pictures.sh out/pictures >/dev/null
mkdir -p build/docs/pictures

pages=("$PWD"/docs/{effects,keying,preview-and-export}.md) photographs=$PWD/out/pictures
(
  cd build/docs/pictures
  host resize "Z:$photographs/china.jpg" background.png --size 480x320 --method box
  host resize "Z:$photographs/flower.jpg" layer.png --size 480x320 --method box
  page_commands "${pages[@]}" | while read -ra arguments; do host "${arguments[@]}" </dev/null; done
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
if grep -l '&lt;/tt&gt;' build/docs/html/*.html; then
  echo "docs.sh: code in a heading shows its tags there" >&2
  exit 1
fi
tests/docs/links_test.py build/docs/html
echo "$PWD/build/docs/html/index.html"
