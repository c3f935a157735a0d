#!/usr/bin/env bash
# Runs a clip through pictavo-host stream and through the frei0r effects, into out/video, and
# times effects on 1080p frames beside the nearest of ffmpeg's own.
#   scripts/video.sh [PATTERN]     only the chains in which grep finds it are timed
set -euo pipefail
pattern=${1:-}
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/sample_host.sh ''
scripts/build.sh native frei0r_direction
scripts/pictures.sh out/pictures >/dev/null
mkdir -p out/video
cd out/video
background=../pictures/china.jpg
frames=48
mp4=(-vf scale=out_color_matrix=bt709:out_range=tv -pix_fmt yuv420p
  -colorspace bt709 -color_primaries bt709 -color_trc bt709 -color_range tv)
pixels=bgra  # in the pipes
raw=(-f rawvideo -pix_fmt bgra -video_size 1920x1080 -framerate 24)

# A flower that moves in front of a green screen.
ffmpeg -v error -y -f lavfi -i color=0x00B140:size=1920x1080:rate=24 -loop 1 -r 24 -i ../pictures/flower.jpg \
  -filter_complex "[1]scale=800:-1[f];[0][f]overlay=x=200+240*t:y='200+80*sin(t*3)',noise=alls=4:allf=t" \
  -frames:v $frames -f rawvideo -pix_fmt bgra clip.raw

stream() { host stream --size 1920x1080 --pixels $pixels "$@"; }
stream "key=00B140:40:30 | over=$background | resize=1280x720 | blur=1" < clip.raw |
  ffmpeg -v error -y -f rawvideo -pix_fmt bgra -video_size 1280x720 -framerate 24 -i - "${mp4[@]}" keyed.mp4
stream "key=00B140:40:30" < clip.raw > cut.raw
FREI0R_PATH=../../build/native/frei0r ffmpeg -v error -y "${raw[@]}" -i clip.raw \
  "${mp4[@]}" -vf "frei0r=filter_name=pictavo_direction:filter_params=0.4|0.2,scale=1280:720:out_color_matrix=bt709:out_range=tv" \
  moved.mp4

echo
echo "Frames per second at 1080p through pipes, start of the program left out"
# The time of many frames without that of a few. Both sides must give every frame: a filter graph
# that ends early would look fast.
pace() {  # COMMAND…
  local few many
  few=$(seconds 1 "$@") many=$(seconds 5 "$@")
  awk -v few="$few" -v many="$many" -v n=$((4 * frames)) 'BEGIN { printf "%.1f", n / (many - few) }'
}
seconds() {  # TIMES COMMAND…: feeds the clip so many times
  local start bytes
  start=$(date +%s.%N)
  bytes=$(for _ in $(seq "$1"); do cat "$clip"; done | "${@:2}" 2>/dev/null | wc -c)
  [ $((bytes % ($1 * frames))) = 0 ] && [ "$bytes" -gt 0 ] || { echo "Frames are missing: ${*:2}" >&2; exit 1; }
  awk -v start="$start" -v end="$(date +%s.%N)" 'BEGIN { print end - start }'
}
peer() { ffmpeg -v error "${raw[@]/bgra/$pixels}" -i - "$@" -f rawvideo -pix_fmt $pixels -; }
row() {  # CLIP CHAIN NAME FFMPEG-ARGUMENTS
  local clip=$1
  shift
  grep -q -- "$pattern" <<< "$1" || return 0
  printf '| `%s`, %s | %s | %s | `%s` |\n' "$1" $pixels "$(pace stream "$1")" "$(pace peer "${@:3}")" "$2"
}
echo "| chain | pictavo-host stream | ffmpeg | its filter |"
echo "|---|---|---|---|"
row clip.raw "" null -vf null
row clip.raw "key=00B140:40:30" chromakey -vf chromakey=0x00B140:0.15:0.05
row cut.raw "over=$background" overlay -framerate 24 -i "$background" -filter_complex \
  "[1]scale=1920:1080,format=bgra,loop=-1:1:0[b];[b][0]overlay=format=rgb:shortest=1"
# These take as many pixels as ours, whatever the ratio; scale's plain bilinear takes more as it reduces.
row clip.raw "resize=1280x720:bilinear16" "scale, fast_bilinear" -vf scale=1280:720:flags=fast_bilinear
row clip.raw "resize=1280x720" "scale, lanczos" -vf scale=1280:720:flags=lanczos
row clip.raw "resize=1280x720:nearest" "scale, neighbor" -vf scale=1280:720:flags=neighbor
row clip.raw "blur=10" "gblur, sigma 10 / 3" -vf gblur=sigma=3.33
# As decoders give frames and encoders take them: keyed, over a background, graded, smaller. The peer makes RGB of
# them for its table alone, which is cheaper than what we do.
ffmpeg -v error -y "${raw[@]}" -i clip.raw -vf scale=out_color_matrix=bt709:out_range=tv -f rawvideo -pix_fmt nv12 clip.nv12
awk 'BEGIN { print "LUT_3D_SIZE 33"; for (i = 0; i < 33 ^ 3; ++i) {
  r = i % 33 / 32; g = int(i / 33) % 33 / 32; b = int(i / 1089) / 32; printf "%f %f %f\n", r ^ 0.9, g, 0.9 * b + 0.05 } }' > look.cube
pixels=nv12
row clip.nv12 "resize=1280x720:bilinear16" "scale, fast_bilinear" -vf scale=1280:720:flags=fast_bilinear
row clip.nv12 "key=00B140:40:30 | over=$background | lut=look.cube | resize=1280x720:bilinear16" \
  "chromakey, overlay, lut3d, scale" -framerate 24 -i "$background" -filter_complex \
  "[1]scale=1920:1080,format=yuva420p,loop=-1:1:0[b];[0]format=yuva420p,chromakey=0x00B140:0.15:0.05[k];\
[b][k]overlay=shortest=1,format=bgra,lut3d=look.cube:interp=tetrahedral,scale=1280:720:flags=fast_bilinear"
rm clip.raw cut.raw clip.nv12 look.cube
