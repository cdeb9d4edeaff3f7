#!/usr/bin/env bash
# Runs the fuzz targets, starting from the committed seeds, in parallel on all processors:
# scripts/fuzz.sh [SECONDS [TARGET...]]
#
# Each target runs for SECONDS (default 60). Inputs that reach new code are stored in build/host-fuzz/corpus for the next
# run, failing inputs in build/host-fuzz. `fuzz.sh --keep` adds a minimal set of inputs that reach new code to fuzz/seeds.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/host-fuzz

if [ "${1:-}" = --keep ]; then
  for corpus in "$build"/corpus/*; do
    name=$(basename "$corpus")
    "$build/bin/${name}_fuzzer" -use_counters=0 -set_cover_merge=1 "fuzz/seeds/$name" "$corpus" 2>/dev/null
  done
  exit
fi

seconds=${1:-60}
shift $(($# > 0 ? 1 : 0))
{
  cmake --preset host-fuzz --log-level=WARNING
  cmake --build --preset host-fuzz
} >/dev/null
if [ $# -eq 0 ]; then
  for fuzzer in "$build"/bin/*_fuzzer; do
    set -- "$@" "$(basename "$fuzzer" _fuzzer)"
  done
fi

logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
# shellcheck disable=SC2016 # Expanded by the inner shell.
printf '%s\n' "$@" | xargs -P "$(nproc)" -I{} bash -c '
  build=$1 seconds=$2 name=$3 log=$4/$3
  mkdir -p "$build/corpus/$name"
  if "$build/bin/${name}_fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -artifact_prefix="$build/" "$build/corpus/$name" "fuzz/seeds/$name" >"$log" 2>&1; then
    echo "ok - fuzz $name, $(sed -nE "s/^Done ([0-9]+) runs.*/\1/p" "$log") inputs in $seconds s"
    touch "$log.passed"
  else
    echo "not ok - fuzz $name"
    tail -n 60 "$log" | sed "s/^/#   /"
  fi' run "$build" "$seconds" {} "$logs"

passed=$(find "$logs" -name '*.passed' | wc -l)
echo
echo "$passed passed, $(($# - passed)) failed"
[ "$passed" -eq $# ]
