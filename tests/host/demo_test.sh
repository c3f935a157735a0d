#!/usr/bin/env bash
# Runs the demo through a link to it, as from anywhere. A program that ends badly after its work is done
# shows in its exit code alone.
#   demo_test.sh SOURCE-DIR
set -uo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED: $*" >&2; cat "$work/log" >&2; exit 1; }
ln -s "$1/scripts/demo.sh" "$work/demo"
cd "$1"

rm -f out/*.png
(cd / && "$work/demo") > "$work/log" 2>&1 || fail "it gives $?"
# Width and height stand in a PNG's bytes 16 to 23.
for picture in out/*.png; do
  echo "$(basename "$picture" .png)" $(od -An -tu4 --endian=big -j16 -N8 "$picture")
done | diff - <(cat <<'SIZES'
blend 640 427
contact-sheet-blending 1968 1131
contact-sheet-conversions 1584 1452
contact-sheet-effects 2352 1452
contact-sheet-filters 1200 1773
contact-sheet-frames 816 1452
contact-sheet-gpu 3120 1131
contact-sheet-grading 816 1452
contact-sheet-keying 1200 1131
contact-sheet-opencl 816 1131
contact-sheet-resizing 1584 3378
contact-sheet-transitions 1968 2736
contact-sheet-turning 816 1131
SIZES
) >&2 || fail "its pictures and their sizes"
