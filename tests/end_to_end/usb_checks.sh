# USB printers that come and go. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
watching="vexoctl: watching for USB printers"

# plug arrived|removed INSTANCE: lets the system tell of a printer; vexoctl has been told when this returns.
plug() {
  local path='\\?\USB#VID_1A2B&PID_0001#'$2'#{28d78fad-5a12-11d1-ae5b-0000f803a8c2}'
  "$root/scripts/wine.sh" "${vexoctl%/*}/usb_broadcast.exe" "$1" "$path" || record "plug $*" no
}

echo "# usb watch"
in_background usb watch
plug arrived abc123
plug removed '7&1a2b&0&1'
until_line "$work/output" "removed"
kill -INT "$background"
finished
judge "printer plugged in, another one removed, then Ctrl-C" 0 \
  "like $time arrived ABC123"$'\n'"$time removed 7&1A2B&0&1" "$watching"

in_background --json usb watch --count 2
plug removed abc123
plug arrived abc123
finished
judge "so many events as JSON" 0 \
  "like {\"time\":\"$time\",\"event\":\"removed\",\"device\":\"ABC123\"}"$'\n'\
"{\"time\":\"$time\",\"event\":\"arrived\",\"device\":\"ABC123\"}" \
  '{"note":"watching for USB printers"}'
check "so many milliseconds, without an event" 0 "" "$watching" usb watch --for 100

output=/dev/full in_background usb watch
plug arrived abc123
finished
judge "event that cannot be written" 1 "" "like $watching"$'\n'"vexoctl: cannot write the result: 112 ?*"
