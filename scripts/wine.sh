#!/usr/bin/env bash
# Runs a Windows program of the build under Wine: scripts/wine.sh PROGRAM [ARGUMENT...]
#
# Uses a prefix of the project's own in the build tree (made on first use, about 10 s), without a display. A program
# that runs longer than WINE_TIME_LIMIT seconds (default 300) is ended: a crash would otherwise wait in Wine's debugger.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${VEXO_WINEPREFIX:-$root/build/wineprefix} WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}

if [ ! -e "$WINEPREFIX/ready" ]; then
  mkdir -p "$WINEPREFIX"
  (
    flock 9
    if [ ! -e "$WINEPREFIX/ready" ]; then
      echo "preparing Wine (once)..." >&2
      wineboot -i >/dev/null 2>&1
      wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
      wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null 2>&1
      wineserver -w
      touch "$WINEPREFIX/ready"
    fi
  ) 9>"$WINEPREFIX/lock"
fi
exec timeout --kill-after=5 "${WINE_TIME_LIMIT:-300}" wine "$@"
