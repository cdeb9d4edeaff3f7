#!/usr/bin/env bash
# Builds and runs the benchmarks and prints each result with its limit: scripts/bench.sh
#
# Results beyond their limit are marked OVER; the machine may have been busy.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/processes.sh
build=${VEXO_BENCH_BUILD:-build/windows-x64}

if [ -z "${VEXO_BENCH_BUILD:-}" ]; then
  cmake --preset windows-x64 --log-level=WARNING
fi
cmake --build "$build" \
  --target transfer_benchmark load_benchmark report_benchmark monitor_benchmark scan_benchmark usb_benchmark \
  device_file_benchmark download_benchmark
cmake --preset host-release --log-level=WARNING
cmake --build build/host-release --target virtual_printer

exec {peer_output}< <(exec python3 benchmarks/peer.py)
peer_pids=($!)
exec {scanned_output}< <(exec python3 tools/simulators/scanned_printers.py)
peer_pids+=($!)
trap 'kill "${peer_pids[@]}"; stop_printers; release_wine' EXIT
read -r -a ports <&"$peer_output"
read -r _ <&"$scanned_output"
hold_wine
start_printer build/host-release/bin/virtual_printer /dev/null --loader-delay 0 --restart-time 0

results=$(
  scripts/wine.sh "$build/bin/transfer_benchmark.exe" "${ports[@]}"
  for benchmark in load report monitor scan usb; do
    scripts/wine.sh "$build/bin/${benchmark}_benchmark.exe"
  done
  tests/windows/run_serial_tests.sh "$PWD/scripts/wine.sh" "$build/bin/device_file_benchmark.exe"
  scripts/wine.sh "$build/bin/download_benchmark.exe" "$printer_port"
  stat -c '%s' "$build/bin/vexoextend.dll" | awk '{ printf "size of the DLL, MiB;%.3f;<=;1.5\n", $1 / 1048576 }'
)
printf '\n'
tr -d '\r' <<<"$results" | awk -F';' '
  BEGIN { printf "%-43s %9s  %s\n", "measure", "value", "limit" }
  { ok = $3 == ">=" ? $2 >= $4 : $2 <= $4
    printf "%-43s %9s  %s %-5s %s\n", $1, $2, $3, $4, ok ? "ok" : "OVER" }'
