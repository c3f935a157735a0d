#!/usr/bin/env bash
# Builds the SDK and zips it: DLLs, import libraries, headers, debug symbols, samples, documents with
# their pictures.
#   scripts/package.sh [FOLDER]     build/package by default
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
mkdir -p "${1:-$root/build/package}"
folder=$(cd "${1:-$root/build/package}" && pwd)
cd "$root"

scripts/setup.sh
cmake --preset windows >/dev/null
cmake --build --preset windows
scripts/docs.sh build/windows/bin/pictavo-host.exe >/dev/null
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/windows/CMakeCache.txt)
name=pictavo-$version-win64

rm -rf "${folder:?}/$name" "$folder/$name.zip"
cmake --install build/windows --prefix "$folder/$name" >/dev/null
cd "$folder/$name"
find . -type f ! -name SHA256SUMS -printf '%P\n' | LC_ALL=C sort | xargs -d '\n' sha256sum > SHA256SUMS
cd ..
cmake -E tar cf "$name.zip" --format=zip "$name"
echo "$folder/$name.zip"
