#!/usr/bin/env bash
# Runs the fuzz targets from the committed seeds, each for some time and as many at once as there are processors:
# scripts/fuzz.sh [SECONDS [TARGET...]]
#
# SECONDS is 60 unless given. What leads further is kept in build/host-fuzz/corpus and used by the next run; an input that
# fails is left in build/host-fuzz. `fuzz.sh --keep` puts the smallest set of inputs that reach code which no seed has
# reached into fuzz/seeds.
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
# shellcheck disable=SC2016 # For the shell that runs one target.
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
