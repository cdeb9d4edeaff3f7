# Usage errors and help texts. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
echo "# command line"
usage_error "no command" "A subcommand is required"
usage_error "unknown command" $'bogus is not known here\nvexoctl: A subcommand is required' bogus
usage_error "unknown option" "The following argument was not expected: --bogus" version --bogus
usage_error "extra argument" "The following argument was not expected: more" version more
usage_error "no printer" "width requires --port" width get
usage_error "width without a subcommand" "A subcommand is required" -p BUF width
usage_error "no descriptor" "DESCRIPTOR is required" uri
usage_error "no width" "N is required" -p BUF width set
for number in 65536 4294967296 -1 0x280 640mm 6.4 ""; do
  usage_error "not a width: '$number'" "N: '$number' is not a whole number in 0..65535" -p BUF width set "$number"
done
for number in 0 3600001 -5 5s; do
  usage_error "not a time limit: '$number'" "--timeout: '$number' is not a whole number in 1..3600000" \
    -p BUF --timeout "$number" width get
done
usage_error "task without a subcommand" "A subcommand is required" -p BUF task
usage_error "no file to print" "FILE is required" -p BUF print --task 7
usage_error "no task number for a file" "--task is required" -p BUF print receipt
usage_error "wait limit without a wait" "--wait-limit requires --wait" -p BUF print receipt --task 7 --wait-limit 5
usage_error "unknown family" "--family: 'v2' is neither v1 nor gs" -p BUF --family v2 status
for number in 0 10000 -1 7a ""; do
  usage_error "not a task number: '$number'" "N: '$number' is not a whole number in 1..9999" -p BUF task set "$number"
  usage_error "not a task number for a file: '$number'" "--task: '$number' is not a whole number in 1..9999" \
    -p BUF print receipt --task "$number"
done
usage_error "zero events" "--count: '0' is not a whole number in 1..4294967295" -p BUF monitor --count 0
usage_error "invalid time" "--for: '1s' is not a whole number in 1..4294967295" -p BUF monitor --for 1s
usage_error "usb without a subcommand" "A subcommand is required" usb
usage_error "wait limit of zero" "--wait-limit: '0' is not a whole number in 1..86400000" \
  -p BUF print receipt --task 7 --wait --wait-limit 0
usage_error "time to listen is too long" "MS: '3600001' is not a whole number in 0..3600000" -p BUF task wait 3600001
for command in status feed monitor "task set 7" "task clear" "task reset" "task wait 5" "print receipt --task 7"; do
  # shellcheck disable=SC2086 # Several words.
  usage_error "no printer for '$command'" "${command%% *} requires --port" $command
done
for command in "" width "width get" "width set" status feed task "task set" "task clear" "task reset" "task wait" \
  print monitor uri usb "usb watch" scan "scan pos" version; do
  # shellcheck disable=SC2086 # Zero, one or two words.
  check "help for '${command:-vexoctl}'" 0 "like *Usage: vexoctl${command:+ $command} *Example*vexoctl *" "" \
    $command --help
done
