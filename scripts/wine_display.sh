#!/usr/bin/env bash
# Runs a Windows program under Wine with a display that nobody sees, for Direct3D on software.
#   scripts/wine_display.sh PROGRAM.exe [ARGUMENTS]
#
# A Wine session keeps the display that it began with. So these programs have a prefix of their own,
# run one after the other, and end the session.
set -euo pipefail
folder=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
export WINEPREFIX=${WINEPREFIX:-$folder/../build/wine}-display

mkdir -p "$WINEPREFIX"
exec 8>"$WINEPREFIX/.display"
flock 8
xvfb-run --auto-servernum bash -c '
  code=0
  "$0/wine.sh" "$@" || code=$?
  wineserver -k
  exit $code' "$folder" "$@" 8>&-
