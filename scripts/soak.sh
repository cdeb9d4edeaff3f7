#!/usr/bin/env bash
# Uses the library for a long time, everything at once, and looks for what is lost, altered or left behind:
# scripts/soak.sh [MINUTES]
#
# For 20 minutes unless told otherwise. The program soak works in many threads on virtual printers; meanwhile
# vexoctl prints as another host of one of them, and one printer is switched off and on all the time, each time with
# another fault. Ends with the figures of docs/testing.md. Fails if a result was wrong or not among the documented
# ones, or if the process held more at the end than when it was warm.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/processes.sh
seconds=$((${1:-20} * 60))
bin=build/windows-x64/bin
export WINE_TIME_LIMIT=$((seconds + 1200))

cmake --preset windows-x64 --log-level=WARNING
cmake --build build/windows-x64 --target soak vexoctl virtual_printer usb_device
cmake --preset host-release --log-level=WARNING
cmake --build build/host-release --target virtual_printer

work=$(mktemp -d)
soak_pid=
cleanup() {
  [ -z "$soak_pid" ] || kill "$soak_pid" 2>/dev/null || true
  stop_printers # First, for they have inherited the inputs of the others.
  [ -z "${usb_input:-}" ] || unplug_usb
  release_wine
  rm -rf "$work"
}
trap cleanup EXIT
hold_wine

printer() { start_printer build/host-release/bin/virtual_printer /dev/null "$@"; }
in_no_time=(--loader-delay 0 --restart-time 0)
mkdir "$work/loading" "$work/faulty"
printer
quiet=NET,127.0.0.1,$printer_port
printer --job-time 20 --job-gap 10 --status 5
busy=NET,127.0.0.1,$printer_port
printer --store "$work/loading" "${in_no_time[@]}"
loading=NET,127.0.0.1,$printer_port
scan_address=127.$((RANDOM % 254 + 1)).$((RANDOM % 256)).2 # Port 9100 of other addresses is not ours.
printer --address "$scan_address" --port 9100 --discoverable
start_printer $bin/virtual_printer.exe /dev/null --pipe vexo_soak_$$
plug_usb $bin/usb_device.exe "$work/plugged" SOAK vexo_soak_$$

printer
faulty_port=$printer_port
faults=(
  ""
  "--fault wrong-echo@0 bad-checksum@1 silence@2 refuse@3 split@mode"
  "--delay 150"
  "--fault refuse@mode split@0 drop@1 nak@header silence@closing"
  "--split 3"
  "--drop-after 40"
  "--silent"
  "--fault drop@mode refuse@0x4 silence@handshake nak@end"
  "--drop-after 700"
  "--delay 20"
)
change_faulty_printer() {
  stop_last_printer
  sleep 1
  # shellcheck disable=SC2086 # Several words.
  printer --port "$faulty_port" --store "$work/faulty" "${in_no_time[@]}" ${faults[RANDOM % ${#faults[@]}]}
}

mkfifo "$work/input"
scripts/wine.sh $bin/soak.exe "Z:${work//\//\\}" "$quiet" "$busy" "$loading" "NET,127.0.0.1,$faulty_port" "$scan_address" \
  <"$work/input" 2>"$work/report" >/dev/null &
soak_pid=$!
exec {soak_input}>"$work/input"

until grep -q "^at work" "$work/report"; do
  kill -0 "$soak_pid"
  sleep 0.5
done

# sample NAME: lets the program rest and say what it holds.
sample() {
  echo "$1" >&"$soak_input"
  until grep "^held $1" "$work/report"; do
    kill -0 "$soak_pid" || return 1
    sleep 0.5
  done
}

# work_until SECOND: what happens around the program.
jobs=0
wrong_jobs=0
work_until() {
  local task last_change=$SECONDS
  while [ $SECONDS -lt "$1" ]; do
    task=$((5000 + jobs % 5000))
    if [ "$(scripts/wine.sh $bin/vexoctl.exe -p "$busy" print - --task $task --wait <<<"Total 9.99" 2>&1 | tr -d '\r')" != \
      "task $task sent, 11 bytes"$'\n'"task $task ended, value 0x00000005 (5)" ]; then
      wrong_jobs=$((wrong_jobs + 1))
    fi
    jobs=$((jobs + 1))
    if [ $((SECONDS - last_change)) -ge 10 ]; then
      change_faulty_printer
      last_change=$SECONDS
    fi
    kill -0 "$soak_pid" || return 1
    sleep 0.5
  done
}

start=$SECONDS
ok=yes
{
  work_until $((start + seconds / 6)) && sample "when warm" &&
    work_until $((start + seconds / 2)) && sample "in the middle" &&
    work_until $((start + seconds)) && sample "at the end"
} || ok=no
echo end >&"$soak_input"
wait "$soak_pid" || ok=no
soak_pid=
grep -v -e ^held -e "^at work" "$work/report" || true
echo "jobs of vexoctl: $jobs, of which $wrong_jobs went wrong"
[ "$wrong_jobs" = 0 ] && tr -d '\r' <"$work/report" | grep -qx "jobs of other processes: $jobs" || ok=no
echo "soak of $((SECONDS - start)) s: $ok"
[ $ok = yes ]
