#!/usr/bin/env bash
# Runs the serial port tests with two connected terminals as COM5 and COM6:
# run_serial_tests.sh WINE_RUNNER PROGRAM [ARGUMENT...]
set -euo pipefail
runner=$1
shift
"$runner" cmd /c ver >/dev/null # Wine deletes links for its own port numbers, but only at start-up.

prefix=${VEXO_WINEPREFIX:-$(dirname "$runner")/../build/wineprefix}
devices=$prefix/dosdevices
line=$(mktemp -d)
exec {lock}>"$prefix/com5.lock"
flock "$lock"
socat "pty,raw,echo=0,link=$line/host" "pty,raw,echo=0,link=$line/printer" {lock}>&- &
socat_pid=$!
trap 'kill "$socat_pid"; rm -rf "$devices/com5" "$devices/com6" "$line"' EXIT
for attempt in {1..200}; do
  [ ! -e "$line/printer" ] || [ ! -e "$line/host" ] || break
  sleep 0.05
done
ln -sfn "$(readlink "$line/host")" "$devices/com5"
ln -sfn "$(readlink "$line/printer")" "$devices/com6"
"$runner" "$@"
