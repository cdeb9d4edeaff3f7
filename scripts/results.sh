# Runs the steps of scripts/test.sh and counts their results. To be sourced.

passed=0
failed=0
failures=()

# show_time STARTED: prints the duration of a step that started when SECONDS had this value.
show_time() {
  printf '   %d s\n' $((SECONDS - $1))
}

note_failure() {
  failed=$((failed + ${2:-1}))
  failures+=("$1")
}

# run_step NAME COMMAND...: runs a command that counts as one test. Prints its output if it fails.
run_step() {
  local name=$1 log started=$SECONDS
  shift
  log=$(mktemp)
  printf '== %s\n' "$name"
  if "$@" >"$log" 2>&1; then
    passed=$((passed + 1))
    rm -f "$log"
    show_time "$started"
    return 0
  fi
  tail -n 100 "$log"
  rm -f "$log"
  note_failure "$name"
  return 1
}

build_preset() {
  cmake --preset "$1" && cmake --build --preset "$1"
}

# run_tests PRESET: runs the tests of a build and counts the individual tests of each program.
run_tests() {
  local results="build/$1/test_results" counts started=$SECONDS
  printf '== test %s\n' "$1"
  rm -rf "$results"
  mkdir -p "$results"
  ctest --preset "$1" --no-tests=error || note_failure "ctest $1"
  if counts=$(python3 scripts/count_results.py "$results"); then
    read -r ok bad <<<"$counts"
    printf '   %s: %s passed, %s failed\n' "$1" "$ok" "$bad"
    passed=$((passed + ok))
  else
    note_failure "results of $1"
  fi
  show_time "$started"
}

# run_script NAME SCRIPT...: runs a script that ends with a line "N passed, N failed" and adds these numbers.
run_script() {
  local name=$1 log counts started=$SECONDS
  shift
  log=$(mktemp)
  printf '== %s\n' "$name"
  "$@" 2>&1 | tee "$log"
  if [ "${PIPESTATUS[0]}" -ne 0 ]; then
    note_failure "$name"
  fi
  counts=$(sed -nE 's/^([0-9]+) passed, ([0-9]+) failed$/\1/p' "$log" | tail -n 1)
  rm -f "$log"
  if [ -n "$counts" ]; then
    passed=$((passed + counts))
  else
    note_failure "$name ended early"
  fi
  show_time "$started"
}

print_summary() {
  local failure
  for failure in "${failures[@]+"${failures[@]}"}"; do
    printf 'FAILED: %s\n' "$failure"
  done
  printf '%d passed, %d failed\n' "$passed" "$failed"
  [ "$failed" -eq 0 ]
}
