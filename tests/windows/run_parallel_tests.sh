#!/usr/bin/env bash
# Runs the parallel port tests with a file as the device LPT5:
# run_parallel_tests.sh WINE_RUNNER PROGRAM [ARGUMENT...]
set -euo pipefail
runner=$1
shift
"$runner" cmd /c ver >/dev/null # Wine deletes links for its own port numbers, but only at start-up.

prefix=${VEXO_WINEPREFIX:-$(dirname "$runner")/../build/wineprefix}
link=$prefix/dosdevices/lpt5
device=$(mktemp)
exec {lock}>"$prefix/lpt5.lock"
flock "$lock"
trap 'rm -f "$link" "$device"' EXIT
ln -sfn "$device" "$link"
"$runner" "$@"
