#!/usr/bin/env bash
# Runs a long stress test (default: 20 minutes) that looks for lost or altered data and leaks: scripts/soak.sh [MINUTES]
#
# The program soak uses virtual printers from several threads. Meanwhile vexoctl prints on one of them as another host, and
# one printer is restarted repeatedly with different faults. The script prints the figures of docs/testing.md. It fails if
# a result was wrong or undocumented, or if the resource usage at the end exceeds that after the warm-up.
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
  stop_printers # First, because they have inherited the inputs of the other programs.
  [ -z "${usb_input:-}" ] || unplug_usb
  release_wine
  rm -rf "$work"
}
trap cleanup EXIT
hold_wine

printer() { start_printer build/host-release/bin/virtual_printer /dev/null "$@"; }
no_delay=(--loader-delay 0 --restart-time 0)
mkdir "$work/loading" "$work/faulty"
printer
quiet=NET,127.0.0.1,$printer_port
printer --job-time 20 --job-gap 10 --status 5
busy=NET,127.0.0.1,$printer_port
printer --store "$work/loading" "${no_delay[@]}"
loading=NET,127.0.0.1,$printer_port
scan_address=127.$((RANDOM % 254 + 1)).$((RANDOM % 256)).2 # A random address, so that port 9100 is free.
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
  printer --port "$faulty_port" --store "$work/faulty" "${no_delay[@]}" ${faults[RANDOM % ${#faults[@]}]}
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

# sample NAME: makes the program pause and print its resource usage.
sample() {
  echo "$1" >&"$soak_input"
  until grep "^held $1" "$work/report"; do
    kill -0 "$soak_pid" || return 1
    sleep 0.5
  done
}

# work_until SECOND: prints with vexoctl and restarts the faulty printer.
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
