# Functions for the end-to-end checks. To be sourced by vexoctl_test.sh, which sets root, vexoctl, virtual_printer and
# work (a temporary folder).
# shellcheck shell=bash disable=SC2034,SC2154
passed=0
failed=0

user_locale=C # Determines the language of error texts.

run_vexoctl() { env LC_ALL="$user_locale" "$root/scripts/wine.sh" "$vexoctl" "$@"; }

# as_expected LINES FILE: whether the file equals the lines exactly or, for "like PATTERN", matches the pattern.
as_expected() {
  local expected=$1 file=$2 actual
  case $expected in
    "like "*)
      actual=$(cat "$file")
      # shellcheck disable=SC2053 # Pattern match.
      [[ $actual == ${expected#like } ]]
      ;;
    "") [ ! -s "$file" ] ;;
    *) cmp -s <(printf '%s\n' "$expected") "$file" ;;
  esac
}

# record NAME OK [FILE...]: counts a check, passed if OK is "yes". If it failed, prints the files.
record() {
  local name=$1 ok=$2 file
  shift 2
  if [ "$ok" = yes ]; then
    passed=$((passed + 1))
    echo "ok - $name"
    return
  fi
  failed=$((failed + 1))
  echo "not ok - $name"
  for file in "$@"; do
    echo "${file##*/}:"
    cat -A "$file"
  done | sed 's/^/#   /'
}

# judge NAME STATUS OUTPUT ERRORS: compares the results of vexoctl in $status, $output and $errors.
output=$work/output
errors=$work/errors
judge() {
  local ok=no
  [ "$status" = "$2" ] && as_expected "$3" "$work/output" && as_expected "$4" "$errors" && ok=yes
  printf 'status %s, output:\n%s\nerrors:\n%s\n' "$2" "$3" "$4" >"$work/expected"
  echo "$status" >"$work/status"
  record "$1" "$ok" "$work/expected" "$work/status" "$work/output" "$errors"
}

# check NAME STATUS OUTPUT ERRORS ARGUMENT...: runs vexoctl with standard input from $input and compares its results.
input=/dev/null
check() {
  status=0
  : >"$work/output"
  run_vexoctl "${@:5}" >"$output" 2>"$errors" <"$input" || status=$?
  judge "${@:1:4}"
}

succeeds() { check "$1" 0 "$2" "" "${@:3}"; }
fails() { check "$1" 1 "" "vexoctl: $2" "${@:3}"; }
usage_error() { check "$1" 2 "" "vexoctl: $2"$'\n'"Run with --help for more information." "${@:3}"; }

# in_background ARGUMENT...: starts vexoctl in the background. `finished` waits for its end, then `judge` checks it.
in_background() {
  : >"$work/output"
  : >"$errors"
  env LC_ALL=C "$root/scripts/wine.sh" "$vexoctl" "$@" >"$output" 2>"$errors" </dev/null &
  background=$!
}
finished() {
  status=0
  wait "$background" || status=$?
  background=
}

# vexoctl may wait forever if a check failed.
end_background() {
  [ -z "${background:-}" ] || kill "$background" 2>/dev/null || true
}

# until_line FILE PATTERN [COUNT]: waits until COUNT lines (default 1) of a growing file match the pattern.
until_line() {
  local deadline=$((SECONDS + 60))
  until [ "$(grep -cE -e "$2" "$1")" -ge "${3:-1}" ]; do
    if [ $SECONDS -ge $deadline ]; then
      record "line '$2' in ${1##*/}" no "$1"
      return
    fi
    sleep 0.02
  done
}

# finish_trace: stops the printer after the end of every connection, so that its trace is complete.
finish_trace() {
  until_line "$trace" '#[0-9]+ (closed by the host|lost: |dropped)' "$(grep -c 'connected from' "$trace")"
  stop_printers
}

# printer_received NAME WORDS...: stops the printer and checks the data in its trace.
printer_received() {
  local name=$1 ok=no
  shift
  finish_trace
  sed -nE 's/^ *[0-9.]+ #[0-9]+ -> ([0-9A-F]{2} )+ *//p' "$trace" >"$work/received"
  printf '%s\n' "$@" >"$work/expected"
  ! cmp -s "$work/expected" "$work/received" || ok=yes
  record "$name" "$ok" "$work/expected" "$trace"
}

# printer [OPTION...]: starts a printer and sets $port, $net and $trace.
printer() {
  trace=$work/trace
  start_printer "$virtual_printer" "$trace" "$@"
  port=$printer_port
  net=NET,127.0.0.1,$port
}

# Pattern for a time of day.
time='[0-2][0-9]:[0-5][0-9]:[0-5][0-9].[0-9][0-9][0-9]'

# Result codes and their texts.
unsupported="-4 Does not support this printer. Please use the supported printer."
bad_setting="-301 IO invalid setting. Please confirm IO port configuration."
open_failed="-311 IO port open failed. Please confirm the configuration is correct."
open_failed_chinese="-311 IO错误：打开失败。 请确认配置是否正确！"
read_failed="-331 IO port read failed. Please confirm IO port is open."
read_timeout="-332 IO port read timeout. Please read again."
write_timeout="-322 IO port write timeout. Please write again."
no_usb_device="-372 Usb Device not found. Please confirm the target printer is connected and power on."
no_answer="-7003 the printer does not answer"
no_answer_chinese="-7003 打印机没有应答。"
