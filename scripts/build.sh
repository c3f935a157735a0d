#!/usr/bin/env bash
# Sets this machine up and builds a preset: all of it, or the targets that are named.
#   scripts/build.sh PRESET [TARGET…]
set -euo pipefail
preset=${1:?usage: scripts/build.sh PRESET [TARGET…]}
targets=("${@:2}")
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" ${targets:+--target "${targets[@]}"}
