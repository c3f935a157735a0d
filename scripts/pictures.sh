#!/usr/bin/env bash
# Puts two photographs for the demo into a folder, with their credits, unless they are there.
#   scripts/pictures.sh FOLDER
set -euo pipefail
if [ $# -ne 1 ]; then
  echo "usage: scripts/pictures.sh FOLDER" >&2
  exit 2
fi
mkdir -p "$1"
folder=$(cd "$1" && pwd)

# A small Debian package that carries photographs; it is unpacked, not installed.
package=python3-sklearn
pictures=(china.jpg flower.jpg)

missing=0
for file in "${pictures[@]}" CREDITS.txt; do
  [ -s "$folder/$file" ] || missing=1
done
if [ $missing -eq 1 ]; then
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  chmod 755 "$scratch"
  cd "$scratch"
  if ! apt-get download -qq "$package" 2>"$scratch/log"; then  # the package lists may be missing or old
    as_root=
    if [ "$(id -u)" -ne 0 ]; then as_root=sudo; fi
    $as_root apt-get update -qq
    apt-get download -qq "$package" 2>"$scratch/log" || { cat "$scratch/log" >&2; exit 1; }
  fi
  dpkg -x "$package"_*.deb unpacked
  images=$(dirname "$(find unpacked -name "${pictures[0]}")")
  for file in "${pictures[@]}"; do
    cp "$images/$file" "$folder/"
  done
  printf '%s\n\n%s\n' "Photographs from the Debian package $package, with its own words on them:" \
    "$(cat "$images/README.txt")" > "$folder/CREDITS.txt"
fi
echo "Photographs in $folder"
sed 's/^/  /; s/ *$//' "$folder/CREDITS.txt"
