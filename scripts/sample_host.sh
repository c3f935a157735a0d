# What the scripts share that run the sample host. To be sourced in the project's folder:
#   source scripts/sample_host.sh PICTAVO-HOST.EXE     for '', sets up and builds one
# shellcheck shell=bash
export LC_ALL=C.UTF-8  # Wine reads file names in the locale's character set
scripts=$PWD/scripts
[ -n "$1" ] || scripts/build.sh windows pictavo_host
program=$(realpath "${1:-build/windows/bin/pictavo-host.exe}")

host() {  # COMMAND [ARGUMENTS]: in any folder
  local run=wine
  case $1 in gpu-* | demo) run=wine_display ;; esac  # Direct3D needs a display
  "$scripts/$run.sh" "$program" "$@"
}

# The commands that pages show below their pictures, in their order.
page_commands() {  # PAGE…
  sed -n 's/.*<br>`\(.*\)` |.*/\1/p' "$@"
}
