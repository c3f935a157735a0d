#!/usr/bin/env bash
# Builds the SDK, and nothing else, and packs it twice: a zip of DLLs, import libraries, headers, debug
# symbols, frei0r effects, samples, documents with their pictures; and a NuGet package.
#   scripts/package.sh [--tests] [FOLDER]     build/package by default
# With --tests also a zip of the test programs, for a run on a Windows machine: scripts/windows_run.cmd.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
tests=
if [ "${1-}" = --tests ]; then
  tests=yes
  shift
fi
mkdir -p "${1:-$root/build/package}"
folder=$(cd "${1:-$root/build/package}" && pwd)
cd "$root"

scripts/build.sh windows sdk ${tests:+windows_tests}
scripts/docs.sh build/windows/bin/pictavo-host.exe >/dev/null
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/windows/CMakeCache.txt)
name=pictavo-$version-win64

pack() {  # FOLDER
  (cd "$folder" && rm -f "$1.zip" && cmake -E tar cf "$1.zip" --format=zip "$1")
}

rm -rf "${folder:?}/$name"
cmake --install build/windows --prefix "$folder/$name" >/dev/null
(
  cd "$folder/$name"
  find . -type f ! -name SHA256SUMS -printf '%P\n' | LC_ALL=C sort | xargs -d '\n' sha256sum > SHA256SUMS
)
pack "$name"
scripts/nuget.py "$folder/$name" "$folder/pictavo.$version.nupkg" "$version"

if [ -n "$tests" ]; then
  rm -rf "${folder:?}/$name-tests"
  cmake --install build/windows --component tests --strip --prefix "$folder/$name-tests" >/dev/null
  pack "$name-tests"
  echo "$folder/$name-tests.zip"
fi
echo "$folder/pictavo.$version.nupkg"
echo "$folder/$name.zip"
