#!/usr/bin/env bash
# Runs a Windows program under Wine, with a prefix of this project's own.
#   scripts/wine.sh PROGRAM.exe [ARGUMENTS]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine} WINEDEBUG=${WINEDEBUG:--all}
# Without its debugger: that would end a program that crashed with exit code 0.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-winedbg.exe=d}

# Debian's `wine` asks for its 32-bit half at every start; the 64-bit loader does not.
wine=wine
for loader in /usr/lib/wine/wine64 /usr/bin/wine64; do
  if [ -x "$loader" ]; then wine=$loader; break; fi
done

mkdir -p "$WINEPREFIX"
(
  flock 9  # several tests may start at once in a fresh prefix
  if [ ! -e "$WINEPREFIX/system.reg" ]; then
    echo "Setting up Wine in $WINEPREFIX (once)" >&2
    wine wineboot -i >/dev/null 2>&1 || true
    for _ in {1..300}; do  # written a moment later
      [ ! -e "$WINEPREFIX/system.reg" ] || break
      sleep 0.2
    done
    [ -e "$WINEPREFIX/system.reg" ] || { echo "wine.sh: Wine cannot set up $WINEPREFIX" >&2; exit 1; }
  fi
) 9>"$WINEPREFIX/.lock"
exec "$wine" "$@"
