#!/usr/bin/env bash
# Keys the scene of docs/keying.md in the page's ways and by ffmpeg's chromakey and despill, and prints
# how far each lies from the truth: the root mean square of the colours' differences.
#   scripts/keying.sh [PICTAVO-HOST.EXE]     without it, sets up and builds one
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/sample_host.sh "${1-}"
mkdir -p out/keying
cd out/keying
error() { host measure "$1" --beside key-truth.png </dev/null; }
host scene key-shot.png key-background.png key-truth.png >/dev/null

echo "Slot 86 alone, laid over: angle down, denoise across"
denoises=(0 10 15 20 30)
printf '| |%s\n' "$(printf ' %s |' "${denoises[@]}")"
for angle in 15 35 60 89; do
  printf '| %s |' $angle
  for denoise in "${denoises[@]}"; do
    host key key-shot.png keyed.png --key 2EA83E $angle $denoise --background key-background.png >/dev/null
    printf ' %.2f |' "$(error keyed.png)"
  done
  echo
done

echo "The page's commands"
page_commands ../../docs/keying.md | while read -ra arguments; do
  host "${arguments[@]}" </dev/null >/dev/null
  case " ${arguments[*]} " in
    *" --background "*) echo "$(error "${arguments[2]}")  ${arguments[*]}" ;;
    " blend "*) echo "$(error "${arguments[3]}")  ${arguments[*]}" ;;
  esac
done

# All settings of one chromakey in one graph: each branch is laid over the background in RGB.
branches=(null)
for mix in 0.4 0.5 0.6 0.75; do
  for expand in 0 0.3; do
    for green in -1 -0.8 -0.6 -0.4; do branches+=("despill=mix=$mix:expand=$expand:green=$green"); done
  done
done
n=${#branches[@]}
pads() { for ((i = 0; i < n; ++i)); do printf '[%s%d]' "$1" $i; done; }
try() {  # COLOUR SIMILARITY BLEND: prints an error and the filters for each branch
  local graph outputs=() i
  graph="[0]format=yuva444p,chromakey=$1:$2:$3,format=bgra,split=$n$(pads k);[1]format=gbrp,split=$n$(pads b)"
  graph+=";[2]format=gbrp,split=$n$(pads t)"
  for ((i = 0; i < n; ++i)); do
    graph+=";[k$i]${branches[i]}[d$i];[b$i][d$i]overlay=format=gbrp[o$i];[o$i][t$i]psnr=stats_file=psnr$i[p$i]"
    outputs+=(-map "[p$i]" -f null -)
  done
  ffmpeg -v error -i key-shot.png -i key-background.png -i key-truth.png -filter_complex "$graph" "${outputs[@]}"
  for ((i = 0; i < n; ++i)); do
    sed -n "s/.*mse_avg:\([0-9.]*\).*/\1 chromakey=$1:$2:$3,format=bgra,${branches[i]}/p" psnr$i
  done | awk '{ printf "%.2f %s\n", sqrt($1), $2 }'
}
for colour in 0x248432 0x29973C 0x2EA83E 0x34BC45; do
  for similarity in 0.025 0.035 0.05 0.07; do
    for blend in 0.05 0.065 0.08 0.1; do try $colour $similarity $blend; done
  done
done | sort -n > ffmpeg.txt
rm psnr*
echo "ffmpeg's best of $(wc -l < ffmpeg.txt)"
head -3 ffmpeg.txt
# The best once more, laid over and measured as ours are.
read -r _ best < ffmpeg.txt
ffmpeg -v error -y -i key-shot.png -vf "format=yuva444p,$best" keyed.png
host blend key-background.png keyed.png ffmpeg.png >/dev/null
error ffmpeg.png
