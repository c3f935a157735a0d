#!/usr/bin/env bash
# Makes the same pictures by other libraries and prints how far ours lie from theirs; fails where a
# difference is larger than their rules explain.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh peers
scripts/build.sh native pictavo_compare
build/native/bin/pictavo_compare
