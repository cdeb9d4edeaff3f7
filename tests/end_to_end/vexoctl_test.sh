#!/usr/bin/env bash
# vexoctl, the library and a printer, each in a process of its own: what a technician types and what comes of it.
#
# vexoctl_test.sh [VEXOCTL.EXE [VIRTUAL_PRINTER]]; the environment variables VEXOCTL and VIRTUAL_PRINTER serve as well.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
vexoctl=${1:-${VEXOCTL:-$root/build/windows-x64/bin/vexoctl.exe}}
virtual_printer=${2:-${VIRTUAL_PRINTER:-$root/build/host-release/bin/virtual_printer}}
source "$root/scripts/processes.sh"

work=$(mktemp -d)
trap 'stop_printers; release_wine; rm -rf "$work"' EXIT
passed=0
failed=0

user_locale=C # The library speaks the user's language.

run_vexoctl() { env LC_ALL="$user_locale" "$root/scripts/wine.sh" "$vexoctl" "$@"; }

# as_expected LINES FILE: the file must equal the lines to the last byte or, for "like PATTERN", match the pattern.
as_expected() {
  local expected=$1 file=$2 actual
  case $expected in
    "like "*)
      actual=$(cat "$file")
      # shellcheck disable=SC2053 # A pattern is wanted.
      [[ $actual == ${expected#like } ]]
      ;;
    "") [ ! -s "$file" ] ;;
    *) cmp -s <(printf '%s\n' "$expected") "$file" ;;
  esac
}

# check NAME STATUS OUTPUT ERRORS ARGUMENT...: runs vexoctl and compares what it leaves.
output=$work/output
check() {
  local name=$1 expected_status=$2 expected_output=$3 expected_errors=$4 status=0
  shift 4
  : >"$work/output"
  run_vexoctl "$@" >"$output" 2>"$work/errors" </dev/null || status=$?
  if [ "$status" = "$expected_status" ] && as_expected "$expected_output" "$work/output" &&
    as_expected "$expected_errors" "$work/errors"; then
    passed=$((passed + 1))
    echo "ok - $name"
  else
    failed=$((failed + 1))
    echo "not ok - $name"
    {
      printf 'vexoctl %s\n' "$*"
      printf 'expected status %s, output:\n%s\nerrors:\n%s\n' "$expected_status" "$expected_output" "$expected_errors"
      printf 'actual status %s, output:\n' "$status"
      cat -A "$work/output"
      printf 'errors:\n'
      cat -A "$work/errors"
    } | sed 's/^/#   /'
  fi
}

succeeds() { check "$1" 0 "$2" "" "${@:3}"; }
fails() { check "$1" 1 "" "vexoctl: $2" "${@:3}"; }
usage_error() { check "$1" 2 "" "vexoctl: $2"$'\n'"Run with --help for more information." "${@:3}"; }

# printer [OPTION...]: starts a printer; $port and $net name it from then on.
printer() {
  start_printer "$virtual_printer" /dev/null "$@"
  port=$printer_port
  net=NET,127.0.0.1,$port
}

# The words behind the codes.
unsupported="-4 Does not support this printer. Please use the supported printer."
bad_setting="-301 IO invalid setting. Please confirm IO port configuration."
open_failed="-311 IO port open failed. Please confirm the configuration is correct."
open_failed_chinese="-311 IO错误：打开失败。 请确认配置是否正确！"
read_failed="-331 IO port read failed. Please confirm IO port is open."
read_timeout="-332 IO port read timeout. Please read again."
no_usb_device="-372 Usb Device not found. Please confirm the target printer is connected and power on."

hold_wine

echo "# versions"
succeeds "version" $'vexoextend 1.0.2.2\nvexoctl 1.0.2.2' version
succeeds "version as JSON" '{"vexoextend":"1.0.2.2","vexoctl":"1.0.2.2"}' --json version
output=/dev/full check "result that cannot be written" 1 "" "like vexoctl: cannot write the result: 112 ?*" version

echo "# descriptors"
succeeds "network printer, its port filled in" \
  $'uri: vexo:/dev/bus/NET/DEVICE?ip=10.0.0.5+port=9100\nkind: 3 net\ntype: NET\ndevice: DEVICE
parameter: ip=10.0.0.5\nparameter: port=9100' \
  uri NET,10.0.0.5
succeeds "parallel port, without parameters" \
  $'uri: vexo:/dev/bus/LPT/lpt1\nkind: 1 parallel\ntype: LPT\ndevice: lpt1' \
  uri lpt1
succeeds "USB printer that is not there" \
  $'uri: vexo:/dev/bus/USB/DEVICE?vid=1A2B+pid=0001\nkind: 2 usb\ntype: USB\ndevice: DEVICE
parameter: vid=1A2B\nparameter: pid=0001' \
  uri USB,VID_0X1A2B,PID_0X0001
succeeds "device URI, its incomplete parameter dropped" \
  $'uri: vexo:/dev/bus/NET/Till 3?ip=1.2.3.4\nkind: 3 net\ntype: NET\ndevice: Till 3\nparameter: ip=1.2.3.4' \
  uri 'vexo:/dev/bus/NET/Till 3?ip=1.2.3.4+port'
succeeds "buffer port, which has no URI" \
  $'uri: none (a port in memory has no address)\nkind: 6 buffer' \
  uri BUF
succeeds "descriptor as JSON" \
  '{"uri":"vexo:/dev/bus/NET/DEVICE?ip=10.0.0.5+port=9100","kind":3,"kindName":"net","type":"NET","device":"DEVICE",'\
'"parameters":[{"key":"ip","value":"10.0.0.5"},{"key":"port","value":"9100"}]}' \
  uri NET,10.0.0.5 --json
succeeds "buffer port as JSON" '{"uri":null,"kind":6,"kindName":"buffer"}' --json uri BUF
fails "network printer without an address" "cannot open NET: $bad_setting" uri NET
fails "network printer with an empty address" "cannot open NET,,9100: $bad_setting" uri NET,,9100
fails "unknown kind of port" "cannot open FOO,1: $bad_setting" uri FOO,1
fails "empty descriptor" "cannot open : $bad_setting" uri ""
fails "kind of port without a driver" "cannot open FILE,a.prn: $unsupported" uri FILE,a.prn
fails "unknown type in a device URI" "cannot open vexo:/dev/bus/TTY/1: $unsupported" uri vexo:/dev/bus/TTY/1
check "bad descriptor as JSON" 1 "" \
  '{"error":{"code":-301,"message":"IO invalid setting. Please confirm IO port configuration.",'\
'"action":"cannot open NET"}}' \
  --json uri NET

echo "# print width"
printer --width 576
succeeds "width at first" 576 -p "$net" width get
succeeds "width set" 640 -p "$net" width set 640
succeeds "width kept by the printer" 640 -p "$net" width get
succeeds "largest width set" 65535 -p "$net" width set 65535
succeeds "largest width kept" 65535 -p "$net" width get
succeeds "smallest width set" 0 -p "$net" width set 0
succeeds "smallest width kept" 0 -p "$net" width get
succeeds "leading zeros do not make an octal number" 640 -p "$net" width set 0640
succeeds "width as JSON, the options behind the command" '{"width":640}' width get --json -p "$net"
succeeds "width set as JSON" '{"width":576}' --json -p "$net" width set 576
succeeds "printer named by its device URI" 576 -p "vexo:/dev/bus/NET/DEVICE?ip=127.0.0.1+port=$port" width get
stop_printers
fails "printer that has gone" "cannot open $net: $open_failed" -p "$net" --timeout 300 width get
check "printer that has gone, as JSON" 1 "" \
  '{"error":{"code":-311,"message":"IO port open failed. Please confirm the configuration is correct.",'\
"\"action\":\"cannot open $net\"}}" \
  --json -p "$net" --timeout 300 width set 640
# A machine without this locale may say so before vexoctl says anything.
user_locale=zh_CN.UTF-8 check "printer that has gone, in Chinese" 1 "" \
  "like *vexoctl: cannot open $net: $open_failed_chinese" \
  -p "$net" --timeout 300 width get

echo "# printers that misbehave"
printer --silent
fails "read from a silent printer" "cannot read the print width of $net: $read_timeout" -p "$net" width get
fails "write to a silent printer" "cannot set the print width of $net: $read_failed" \
  -p "$net" --timeout 300 width set 640
check "silent printer as JSON" 1 "" \
  '{"error":{"code":-332,"message":"IO port read timeout. Please read again.",'\
"\"action\":\"cannot read the print width of $net\"}}" \
  --json -p "$net" --timeout 300 width get
printer --width 480 --split 20
succeeds "answer in pieces, with time to spare" 480 -p "$net" --timeout 20000 width get
printer --split 3000
fails "answer with a long gap in it" "cannot read the print width of $net: $read_timeout" -p "$net" width get
printer --drop-after 19
fails "connection lost before the answer" "no complete answer about the print width of $net: $read_failed" \
  -p "$net" width get
printer --drop-after 19 --once
fails "connection lost and not restored" "cannot read the print width of $net: $open_failed" \
  -p "$net" --timeout 300 width get

echo "# ports without a printer"
check "parallel port that does not exist" 1 "" "like vexoctl: cannot open LPT9: 2 ?*" -p LPT9 width get
fails "USB printer that is not connected" "cannot open USB,VID_0X1A2B,PID_0X0001: $no_usb_device" \
  -p USB,VID_0X1A2B,PID_0X0001 width get
fails "printer without an address" "cannot open NET: $bad_setting" -p NET width get

echo "# command line"
usage_error "no command" "A subcommand is required"
usage_error "unknown command" $'bogus is not known here\nvexoctl: A subcommand is required' bogus
usage_error "unknown option" "The following argument was not expected: --bogus" version --bogus
usage_error "superfluous argument" "The following argument was not expected: more" version more
usage_error "no printer" "width requires --port" width get
usage_error "nothing to do with the width" "A subcommand is required" -p BUF width
usage_error "no descriptor" "DESCRIPTOR is required" uri
usage_error "no width" "N is required" -p BUF width set
for number in 65536 4294967296 -1 0x280 640mm 6.4 ""; do
  usage_error "not a width: '$number'" "N: '$number' is not a whole number in 0..65535" -p BUF width set "$number"
done
for number in 0 3600001 -5 5s; do
  usage_error "not a time limit: '$number'" "--timeout: '$number' is not a whole number in 1..3600000" \
    -p BUF --timeout "$number" width get
done
for command in "" width "width get" "width set" uri version; do
  # shellcheck disable=SC2086 # Zero, one or two words.
  check "help for '${command:-vexoctl}'" 0 "like *Usage: vexoctl${command:+ $command} *Example*vexoctl *" "" \
    $command --help
done

echo
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
