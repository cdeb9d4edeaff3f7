#!/usr/bin/env bash
# Demonstrates the library: builds it, starts virtual printers and uses them through vexoctl, step by step.
#
# Needs only a Debian machine: missing packages are installed first. The exit status is not 0 if a step fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/processes.sh

traces=$(mktemp -d)
monitor=
trap '[ -z "$monitor" ] || kill "$monitor" 2>/dev/null || true; stop_printers; release_wine; rm -rf "$traces"' EXIT

title() { printf '\n== %s\n' "$*"; }

fail() {
  printf '\ndemo: %s\n' "$*" >&2
  exit 1
}

# expect STATUS LINE ARGUMENT...: runs vexoctl, shows the command and its output, and checks the exit status and, unless
# LINE is empty, that the output contains this line.
expect() {
  local expected_status=$1 expected_line=$2 status=0
  shift 2
  printf '\n$ vexoctl %s\n' "$*"
  answer=$(scripts/wine.sh build/windows-x64/bin/vexoctl.exe "$@" 2>&1) || status=$?
  printf '%s\n' "$answer"
  [ "$status" = "$expected_status" ] || fail "exit status $status instead of $expected_status"
  [ -z "$expected_line" ] || grep -qxF -e "$expected_line" <<<"$answer" || fail "no line '$expected_line'"
}

# start_monitor: starts a monitor in the background, which ends after one job.
start_monitor() {
  printf '\n$ vexoctl -p %s monitor --count 2 &\n' "$printer"
  scripts/wine.sh build/windows-x64/bin/vexoctl.exe -p "$printer" monitor --count 2 >"$traces/monitor" 2>&1 &
  monitor=$!
  until grep -q "listening" "$traces/monitor"; do
    kill -0 "$monitor" 2>/dev/null || fail "the monitor does not start: $(cat "$traces/monitor")"
    sleep 0.1
  done
}

# await_monitor: shows the monitor's output and checks the events of task 7.
await_monitor() {
  wait "$monitor" || fail "the monitor failed: $(cat "$traces/monitor")"
  monitor=
  printf '\nOutput of the monitor:\n'
  cat "$traces/monitor"
  grep -qE '^[0-9:.]+ start task 7$' "$traces/monitor" || fail "no start of task 7"
  grep -qE '^[0-9:.]+ end task 7 value 0x00000000 \(0\)$' "$traces/monitor" || fail "no end of task 7"
}

# await_restart: waits until the printer for downloads has restarted.
await_restart() {
  until grep -q "back on" "$traces/loading"; do
    sleep 0.1
  done
}

title "Installing missing packages"
scripts/prepare.sh

title "Building the library and vexoctl for Windows"
cmake --preset windows-x64 --log-level=WARNING
cmake --build --preset windows-x64 --target vexoextend vexoctl virtual_printer usb_device

title "Building the virtual printer for this machine"
cmake --preset host-release --log-level=WARNING
cmake --build --preset host-release --target virtual_printer
hold_wine # Also creates the Wine prefix if needed.

title "Starting a virtual printer with a print width of 576 dots"
start_printer build/host-release/bin/virtual_printer "$traces/printer" --width 576 --trace
printer=NET,127.0.0.1,$printer_port
echo "It listens on 127.0.0.1, port $printer_port."

title "Versions"
expect 0 "vexoextend $(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)" version

title "How the library reads the descriptor of this printer"
expect 0 "uri: vexo:/dev/bus/NET/DEVICE?ip=127.0.0.1+port=$printer_port" uri "$printer"

title "Reading and changing its print width"
expect 0 576 -p "$printer" width get
expect 0 640 -p "$printer" width set 640
expect 0 640 -p "$printer" width get
expect 0 '{"width":640}' -p "$printer" --json width get

title "Jobs: one vexoctl monitors the printer while another prints a receipt as task 7 and waits for its end"
start_monitor
printf 'One coffee   2.50\nThank you!\n\n' >"$traces/receipt"
expect 0 "task 7 ended, value 0x00000000 (0)" -p "$printer" print "$traces/receipt" --task 7 --wait
await_monitor
expect 0 "status: 0xFFFFFFFF (4294967295)" -p "$printer" status

title "A printer that never answers"
start_printer build/host-release/bin/virtual_printer "$traces/silent" --silent --trace
expect 1 "" -p "NET,127.0.0.1,$printer_port" --timeout 500 width get
grep -qE ': -332 .+' <<<"$answer" || fail "the failure is not a read timeout"

title "The same over a serial line, and over USB"
start_printer build/host-release/bin/virtual_printer "$traces/line" --serial "${VEXO_WINEPREFIX:-build/wineprefix}/dosdevices/com7"
expect 0 576 -p COM7,115200 width get
start_printer build/windows-x64/bin/virtual_printer.exe "$traces/usb" --pipe vexo_demo
plug_usb build/windows-x64/bin/usb_device.exe "$traces/plugged" DEMO1 vexo_demo
expect 0 "vexo:/dev/bus/USB/DEMO1" usb list
expect 0 576 -p USB,DEMO1 width get
unplug_usb

title "Downloads: a font and firmware, stored by a third printer"
mkdir "$traces/kept"
start_printer build/host-release/bin/virtual_printer "$traces/loading" --store "$traces/kept" --loader-delay 0 --restart-time 0
loading=NET,127.0.0.1,$printer_port
head -c 5000 /dev/urandom >"$traces/font"
expect 0 "font downloaded, 5000 bytes; the printer restarts" -p "$loading" download font "$traces/font"
cmp "$traces/font" "$traces/kept/font-1.bin" || fail "the stored font differs"
await_restart
{ printf 'HEAD\x88\x13\0\0' && head -c 68 /dev/zero && cat "$traces/font"; } >"$traces/image" # One segment, 5000 bytes.
expect 0 "firmware downloaded, 5076 bytes; the printer restarts" -p "$loading" download firmware "$traces/image" --verbose
cmp "$traces/image" "$traces/kept/firmware-1.bin" || fail "the stored image differs"
head -c 5000 "$traces/image" >"$traces/cut_image"
expect 1 "" -p "$loading" download firmware "$traces/cut_image"

title "Scanning the network, with two more printers"
start_printer build/host-release/bin/virtual_printer "$traces/found" --address 127.77.0.2 --port 9100 --discoverable --name TILL --count 2
expect 0 "" scan pos --target 127.255.255.255 --time 500
for name in TILL-1 TILL-2; do
  grep -qE "^NET,127\.77\.0\.[23] +ready +$name " <<<"$answer" || fail "$name is not found"
done

title "Traces of the first two printers (-> received, <- sent)"
stop_printers
printf '\nThe first printer:\n'
cat "$traces/printer"
printf '\nThe silent printer:\n'
cat "$traces/silent"

title "Everything went as expected"
