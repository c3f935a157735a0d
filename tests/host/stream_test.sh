#!/usr/bin/env bash
# Runs raw frames through pictavo-host stream, and sees how the program refuses.
#   stream_test.sh SOURCE-DIR PROGRAM.exe
set -uo pipefail
host() { "$source/scripts/wine.sh" "$program" stream "$@" 2>"$work/errors"; }
fail() { echo "FAILED: $*" >&2; cat "$work/errors" >&2; exit 1; }
source=$1 program=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Forty frames of 64 x 48 pixels, each of a grey of its own.
for grey in $(seq 101 140); do
  head -c 12288 /dev/zero | tr '\0' "\\$(printf %o "$grey")"
done > "$work/frames"

for threads in 1 5; do
  host --size 64x48 --threads $threads 'blur=3 | convert=grey' < "$work/frames" > "$work/out" ||
    fail "a plain chain"
  # A grey pixel's mean is itself; only alpha may differ, so look at every fourth byte.
  cmp <(od -An -v -tu1 -w4 "$work/frames" | awk '{print $1}') \
    <(od -An -v -tu1 -w4 "$work/out" | awk '{print $1}') || fail "the order of $threads threads"
done
host --size 64x48 $'resize=32x24:box |\n resize=16x12' < "$work/frames" | wc -c | grep -qx $((40 * 16 * 12 * 4)) ||
  fail "the size of resized frames"
# A second video, whose frames go the other way: a fade from frame 10 to 20, and one in which the
# second video lies under clear frames.
head -c $((39 * 12288)) <(for grey in $(seq 240 -1 201); do
  head -c 12288 /dev/zero | tr '\0' "\\$(printf %o "$grey")"
done) > "$work/others"
greys() { od -An -v -tu1 -w12288 | awk '{print $1}'; }
host --size 64x48 --second "$work/others" 'fade=10-20:second' < "$work/frames" | greys > "$work/greys"
cmp <(for i in {0..9}; do echo $((101 + i)); done) <(head -10 "$work/greys") &&
  cmp <(for i in {20..38}; do echo $((240 - i)); done) <(tail -n +21 "$work/greys") ||
  fail "a fade into a second video"
host --size 64x48 --second "$work/others" 'layer=lighten:255:second | pixelate=9 | border=2' < "$work/frames" |
  wc -c | grep -qx $((39 * 4 * 68 * 52)) || fail "a second video that ends first"
host --size 64x48 $' \n' < /dev/null | wc -c | grep -qx 0 || fail "no frames"

# Grey frames of 64 x 48 in layouts of 12 bits a pixel: luma, then neutral chroma.
grey() {  # BYTES-OF-LUMA
  head -c "$1" "$work/frames"; head -c $(($1 / 2)) /dev/zero | tr '\0' '\200'
}
grey 3072 | host --size 64x48 --pixels i420 --range full resize=32x24 | cmp - <(grey 768) || fail "resized I420"
grey 3072 | host --size 64x48 --pixels nv12 --matrix bt2020 blur=2 | cmp - <(grey 3072) || fail "NV12"

expect() {  # EXIT-CODE MESSAGE ARGUMENTS; the frames end in the middle of the tenth
  head -c 120000 "$work/frames" | host "${@:3}" > "$work/out"
  local got=$?
  [ $got -eq "$1" ] || fail "exit code $got for: ${*:3}"
  grep -q "$2" "$work/errors" || fail "the message for: ${*:3}"
}
expect 5 "short: 9408 of 12288" --size 64x48 blur=2
[ "$(wc -c < "$work/out")" -eq $((9 * 12288)) ] || fail "frames before a short one"
expect 3 "width" --size 0x48 blur=2
expect 3 "too many" --size 1048576x1048576 blur=2
expect 3 "resize" --size 64x48 resize=0x5
expect 3 "32767.*40000 x 1" --size 40000x1 resize=20x1:box
# A frame of 4 GB of which little comes, where there is no room for it.
(ulimit -v $((3 << 20)) && expect 5 "short: 120000 of" --threads 1 --size 32767x32767 blur=2) || exit 1
expect 3 "needs the size" blur=2
expect 4 '"blurr"' --size 64x48 'blurr=2'
expect 4 '""' --size 64x48 'blur=2 | '
expect 2 'no --pixels "rgb"' --size 64x48 --pixels rgb
expect 5 "short: .* of 4608" --size 64x48 --pixels nv12
host --size 64x48 'rotate=180 | rotate=180:1 | tilt=0' < "$work/frames" | cmp - "$work/frames" || fail "two half turns"
expect 2 "DENOISE" --size 64x48 key=00FF00:30
expect 2 "smaller side" --size 64x48 blur=49
expect 1 "cannot read" --size 64x48 over=nothing.png
expect 1 "cannot read" --size 64x48 --second nothing.raw over=second
expect 2 "needs a second video" --size 64x48 fade=0.5:second
expect 3 "second video's size" --size 64x48 --second "$work/others" 'resize=32x24 | over=second'
expect 2 "no transition" --size 64x48 transition=swing:0.5:0:0:second

for _ in {1..50}; do cat "$work/frames"; done | { host --size 64x48 blur=2; echo $? > "$work/code"; } | head -c 1 > "$work/out"
[ "$(cat "$work/code")" -eq 6 ] || fail "a closed pipe gives $(cat "$work/code")"
grep -q "nobody takes" "$work/errors" || fail "the message for a closed pipe"

# Pictures: an ending that is no format, and a name that cannot be replaced.
base64 -d > "$work/one.png" <<< iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==
blur() { (cd "$work" && "$source/scripts/wine.sh" "$program" blur one.png "$1" --radius 1 > out 2> errors); }
echo old > "$work/old.bmp"
mkdir "$work/folder.png"
blur old.bmp; [ $? -eq 2 ] && grep -q "\.jpeg" "$work/errors" && grep -q old "$work/old.bmp" || fail "an unknown ending"
blur folder.png; [ $? -eq 1 ] && ! ls "$work"/*.part 2>/dev/null || fail "what is left of a failed write"
blur two.png || fail "a plain write"
(cd "$work" && "$source/scripts/wine.sh" "$program" motion-blur one.png three.png --direction 4e9 0 2> errors)
[ $? -eq 1 ] && grep -q "2147483649 x 1 pixels is too large" "$work/errors" || fail "a motion that is too large"
cmp -n 8 "$work/one.png" "$work/two.png" || fail "no PNG was written"

# A hard scene, keyed: no farther from the truth than docs/keying.md says.
run() { (cd "$work" && "$source/scripts/wine.sh" "$program" "$@" 2> errors); }
run scene shot.png behind.png truth.png > "$work/out" &&
  run screen-key shot.png keyed.png --screen 2EA83E --background behind.png > "$work/out" &&
  run measure keyed.png --beside truth.png | awk '{ exit !($1 > 1 && $1 < 5.1) }' || fail "a key of a hard scene"

grey 3072 | host --size 64x48 --pixels i420 --range full screen-key=2EA83E | cmp - <(grey 3072) ||
  fail "a key of a frame without a screen"

# The library without its modules says so.
mkdir "$work/alone"
cp "$program" "$(dirname "$program")/Pictavo.dll" "$work/alone"
program=$work/alone/$(basename "$program")
expect 1 'with 0x80004005; missing.*ConvertUtility.dll' --size 64x48 convert=hsv
