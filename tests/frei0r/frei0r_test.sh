#!/usr/bin/env bash
# Runs every plug-in in a program of our own and compares what it makes with the recorded bytes, which
# are the same on Linux (kernels inside) and on Windows (through the DLL). Then, on Linux, in the programs
# that load such plug-ins.
#   frei0r_test.sh RUN_PLUGINS FOLDER_OF_PLUG-INS
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }

exported() {  # PLUG-IN
  case $1 in
    *.dll) x86_64-w64-mingw32-objdump -p "$1" | awk '/Ordinal\/Name Pointer/ {on = 1; next} !NF {on = 0} on {print $NF}' ;;
    *) nm -D --defined-only "$1" | awk '{print $3}' ;;
  esac
}
run=()
case $1 in *.exe) run=("$here/../../scripts/wine.sh") ;; esac
"${run[@]}" "$1" "$2" "$work" || fail "what the plug-ins make"
(cd "$work" && sha256sum --quiet -c "$here/frames.sha256") || fail "other bytes than recorded"
diff <(cd "$work" && ls) <(awk '{print $2}' "$here/frames.sha256" | sort) || fail "a plug-in that is not recorded"
for plugin in "$2"/pictavo_*; do
  diff <(exported "$plugin" | LC_ALL=C sort) <(awk 'NR > 1 {print $1}' "$here/../../samples/frei0r/exports.def") ||
    fail "$plugin exports something else"
done
case $1 in *.exe) exit ;; esac

export FREI0R_PATH=$2
cd "$work"
filters=()
for plugin in pictavo_*; do
  case $plugin in pictavo_layer | pictavo_lut | pictavo_over | pictavo_transition) continue ;; esac  # mix two, or want a file
  filters+=("$plugin")
done
cat "${filters[@]}" > expected

raw=(-f rawvideo -pix_fmt bgra)
filter() {  # GRAPH: of ffmpeg's, of the first frame
  ffmpeg -v error "${raw[@]}" -video_size 96x64 -i first -filter_complex "$1" -fps_mode passthrough "${raw[@]}" -
}
graph="split=${#filters[@]}" inputs=
for i in "${!filters[@]}"; do graph+="[i$i]"; done
for i in "${!filters[@]}"; do graph+=";[i$i]frei0r=filter_name=${filters[i]}[o$i]" inputs+="[o$i]"; done
filter "$graph;${inputs}concat=n=${#filters[@]}" | cmp - expected || fail "ffmpeg"
# Settings arrive, also those that are no numbers: what stays of a frame that fades is all of it.
filter "frei0r=filter_name=pictavo_mosaic:filter_params=nan" > mosaic
filter "frei0r=filter_name=pictavo_direction:filter_params=nan|nan" > direction
filter "frei0r=filter_name=pictavo_fade:filter_params=red|1" | head -c 12288 |
  cmp - <(head -c 12288 first) || fail "a fade of nothing"
printf 'LUT_1D_SIZE 2\n1 1 1\n0 0 0\n' > negative.cube
filter "frei0r=filter_name=pictavo_lut:filter_params=$work/negative.cube" > graded
filter negate | cmp - graded || fail "a table"

# Only what is needed of GStreamer's own plug-ins is looked at.
libraries=$(dirname "$(find /usr/lib -name libgstfrei0r.so | head -n 1)")
mkdir gst
for library in coreelements rawparse frei0r; do ln -s "$libraries/libgst$library.so" gst/; done
export GST_PLUGIN_SYSTEM_PATH=$work/gst GST_REGISTRY=$work/registry
frame() { echo "filesrc location=$1 blocksize=24576 ! rawvideoparse format=bgra width=96 height=64"; }
for plugin in "${filters[@]}"; do
  gst-launch-1.0 -q $(frame first) ! "frei0r-filter-${plugin/_/-}" ! filesink location=out
  cmp out "$plugin" || fail "GStreamer: $plugin"
done
gst-launch-1.0 -q $(frame first) ! mix. $(frame second) ! mix. frei0r-mixer-pictavo-over name=mix ! \
  filesink location=out 2>/dev/null
cmp out pictavo_over || fail "GStreamer: pictavo_over"

for name in first second; do
  ffmpeg -v error "${raw[@]}" -video_size 96x64 -i $name -c copy $name.nut
done
printf '%s\n' description=frames {frame_rate_num=25,frame_rate_den=1,width=96,height=64,progressive=1,colorspace=709} \
  {sample_aspect_num=1,sample_aspect_den=1,display_aspect_num=3,display_aspect_den=2} > profile
mlt() {  # melt was seen to hang without any plug-in of ours: `again` gives it three tries
  timeout 20 melt -silent -profile "$work/profile" "$@" -consumer avformat:out f=rawvideo vcodec=rawvideo \
    pix_fmt=bgra mlt_image_format=rgba an=1 real_time=-1 2>messages
}
again() { "$@" || "$@" || "$@" || { cat messages >&2; fail "melt"; }; }
again mlt first.nut -attach frei0r.pictavo_gauss
cmp out pictavo_gauss || fail "melt: pictavo_gauss"
again mlt first.nut -track second.nut -transition frei0r.pictavo_over a_track=0 b_track=1
cmp out pictavo_over || fail "melt: pictavo_over"
