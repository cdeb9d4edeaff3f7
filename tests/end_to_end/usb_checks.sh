# USB printers. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
watching="vexoctl: watching for USB printers"

# plug arrived|removed INSTANCE: simulates the system's device message. Returns when vexoctl has processed it.
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
judge "limited number of events, as JSON" 0 \
  "like {\"time\":\"$time\",\"event\":\"removed\",\"device\":\"ABC123\"}"$'\n'\
"{\"time\":\"$time\",\"event\":\"arrived\",\"device\":\"ABC123\"}" \
  '{"note":"watching for USB printers"}'
check "limited time without an event" 0 "" "$watching" usb watch --for 100

output=/dev/full in_background usb watch
plug arrived abc123
finished
judge "event that cannot be written" 1 "" "like $watching"$'\n'"vexoctl: cannot write the result: 112 ?*"

plug_in() { plug_usb "${vexoctl%/*}/usb_device.exe" "$work/plugged" "$@" || record "plugging in $*" no; }

echo "# usb list, ports"
succeeds "no printer" "no USB printers" usb list
plug_in ABC123
succeeds "a printer" "vexo:/dev/bus/USB/ABC123
  name: MODEL
  serial: ABC123
  ids: VID_1A2B&PID_0001
  port: USB001
  location: PORT_#0001.HUB_#0002" usb list
succeeds "a printer as JSON" '{"printers":[{"descriptor":"vexo:/dev/bus/USB/ABC123","name":"MODEL","serial":"ABC123",'\
'"ids":"VID_1A2B&PID_0001","port":"USB001","location":"PORT_#0001.HUB_#0002"}]}' --json usb list
registry='HKLM\HARDWARE\DEVICEMAP\SERIALCOMM'
"$root/scripts/wine.sh" reg add "$registry" /v '\Device\Serial7' /d COM7 /f >/dev/null
check "ports" 0 "like *COM7,9600  serial line; *"$'\n'"vexo:/dev/bus/USB/ABC123  USB printer MODEL" "" ports
"$root/scripts/wine.sh" reg delete "$registry" /v '\Device\Serial7' /f >/dev/null
unplug_usb

echo "# a printer on USB"
usb_pipe=vexo_check_$$
start_printer "${vexoctl%/*}/virtual_printer.exe" "$work/trace" --pipe "$usb_pipe" --console \
  --job-time 50 --job-gap 10
plug_in ABC123 "$usb_pipe"
printf 'Total 9.99\n' >"$work/bill"
succeeds "width over USB" 576 -p USB width get
succeeds "width set on the printer with this serial number" 640 -p USB,ABC123 width set 640
succeeds "width of the printer of this product" 640 -p USB,VID_0X1A2B,PID_0X0001 width get
succeeds "job over USB" $'task 7 sent, 11 bytes\ntask 7 ended, value 0x00000000 (0)' \
  -p vexo:/dev/bus/USB/ABC123 print "$work/bill" --task 7 --wait
in_background -p USB --timeout 300 monitor --count 2
until_line "$errors" "listening to"
status=0
run_vexoctl -p USB --timeout 300 width get >"$work/second_host" 2>&1 || status=$?
ok=no
[ $status = 1 ] && as_expected "vexoctl: cannot read the print width of USB: $read_timeout" "$work/second_host" && ok=yes
record "a second host gets no answer while the first is connected" $ok "$work/second_host"
tell_printer start 7
tell_printer end 7
finished
judge "the first host receives all events" 0 "like $time start task 7"$'\n'"$time end task 7 *" "vexoctl: listening to USB"
succeeds "the second host is served after the first has left" 640 -p USB width get
check "another product" 1 "" "like vexoctl: cannot open USB,VID_0X1A2B,PID_0X0002: -372 ?*" \
  -p USB,VID_0X1A2B,PID_0X0002 width get
unplug_usb
check "printer that was unplugged" 1 "" "like vexoctl: cannot open USB: -372 ?*" -p USB width get
stop_printers
