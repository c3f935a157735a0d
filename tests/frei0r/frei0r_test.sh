#!/usr/bin/env bash
# Runs every plug-in of one frame on frames of a test picture, in a program that loads them.
#   frei0r_test.sh FOLDER-OF-PLUG-INS
set -euo pipefail
export FREI0R_PATH=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }

frames() {  # CHAIN FILE: three frames of 320 x 240 pixels, each with colours and clear places
  ffmpeg -v error -f lavfi -i "testsrc2=size=320x240:rate=25,format=bgra,colorchannelmixer=aa=0.6" \
    -vf "$1" -frames:v 3 -f rawvideo -pix_fmt bgra -y "$work/$2"
  [ "$(stat -c %s "$work/$2")" -eq $((3 * 320 * 240 * 4)) ] || fail "$1 gives other frames"
}

frames null plain
[ "$(ls "$1"/pictavo_*.so | wc -l)" -ge 21 ] || fail "plug-ins are missing"
for plugin in "$1"/pictavo_*.so; do
  name=$(basename "$plugin" .so)
  case $name in pictavo_layer | pictavo_over | pictavo_transition) continue ;; esac  # mix two
  frames "frei0r=filter_name=$name" "$name"
  ! cmp -s "$work/plain" "$work/$name" || fail "$name leaves the frames as they were"
done

# Settings that are no numbers.
frames "frei0r=filter_name=pictavo_mosaic:filter_params=nan" mosaic_nan
frames "frei0r=filter_name=pictavo_direction:filter_params=nan|nan" direction_nan

# Settings arrive: what stays of a frame that fades is all of it, or nothing but the colour.
frames "format=rgba,colorchannelmixer=aa=2,frei0r=filter_name=pictavo_fade:filter_params=red|1" whole
frames "format=rgba,colorchannelmixer=aa=2" opaque
cmp "$work/whole" "$work/opaque" || fail "a fade of nothing"
frames "frei0r=filter_name=pictavo_grey" grey
od -An -v -tu1 -w4 "$work/grey" | awk '$1 != $2 || $2 != $3 { exit 1 }' || fail "grey has colours"
od -An -v -tu1 -w4 "$work/plain" | awk '{ print int(($1 + $2 + $3) / 3) }' > "$work/means"
od -An -v -tu1 -w4 "$work/grey" | awk '{ print $1 }' | cmp - "$work/means" || fail "grey is not the mean"
