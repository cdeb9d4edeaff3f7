#!/usr/bin/env bash
# End-to-end tests: vexoctl and virtual printers as separate processes.
#
# vexoctl_test.sh [VEXOCTL.EXE [VIRTUAL_PRINTER]]; the environment variables VEXOCTL and VIRTUAL_PRINTER serve as well.
# CHECKS selects the groups of checks to run (default: all).
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
vexoctl=$(realpath "${1:-${VEXOCTL:-$root/build/windows-x64/bin/vexoctl.exe}}")
virtual_printer=$(realpath "${2:-${VIRTUAL_PRINTER:-$root/build/host-release/bin/virtual_printer}}")
work=$(mktemp -d)
source "$root/scripts/processes.sh"
source "$root/tests/end_to_end/checks.sh"

cleanup=: # Command that a group of checks needs at exit.
trap 'end_background; stop_printers; $cleanup; release_wine; rm -rf "$work"' EXIT
hold_wine

for group in ${CHECKS:-general width command_line status task print monitor download usb config serial scan}; do
  # shellcheck source=/dev/null
  source "$root/tests/end_to_end/${group}_checks.sh"
done

echo
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
