# Printing files as jobs with task numbers. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
asked='getval "job_monitor"'
switched_on='setval "job_monitor" "on", by V1 reports'
switched_off='setval "job_monitor" "off"'
tagged='setval "process_id" "0007"'

receipt=$work/receipt
printf 'Total 9.99\n' >"$receipt"
roll=$work/roll # Larger than all socket buffers.
head -c 20000000 /dev/zero >"$roll"

# printed_bytes: prints the amount of print data in the printer's trace.
printed_bytes() {
  sed -nE 's/.* print data, ([0-9]+) bytes?\b.*/\1/p' "$trace" | awk '{ sum += $1 } END { print sum + 0 }'
}

echo "# print"
printer --trace --status 5 --job-time 50 --job-gap 10
succeeds "job awaited" $'task 7 sent, 11 bytes\ntask 7 ended, value 0x00000005 (5)' \
  -p "$net" print "$receipt" --task 7 --wait
printer_received "data received by the printer" "$asked" "$switched_on" "$tagged" "print data, 11 bytes, task 0007" \
  "$switched_off"

printer --trace --job-time 50 --job-gap 10
succeeds "job awaited, as JSON" '{"task":7,"bytes":11,"value":0}' -p "$net" --json print "$receipt" --task 7 --wait
succeeds "job not awaited" "task 7 sent, 11 bytes" -p "$net" print "$receipt" --task 7
succeeds "job not awaited, as JSON" '{"task":7,"bytes":11}' print "$receipt" --task 7 --json -p "$net"
input=$receipt succeeds "job from standard input" "task 7 sent, 11 bytes" -p "$net" print - --task 7
finish_trace
record "four jobs arrived completely" "$([ "$(printed_bytes)" = 44 ] && echo yes)" "$trace"

printer --trace --job-time 50 --job-gap 1000 # Long, so that a delay on a busy machine does not end the job.
succeeds "long job" $'task 9999 sent, 20000000 bytes\ntask 9999 ended, value 0x00000000 (0)' \
  -p "$net" print "$roll" --task 9999 --wait
finish_trace
record "the long job arrived completely" "$([ "$(printed_bytes)" = 20000000 ] && echo yes)"

# The value is the first four bytes of the answer to the library's query.
printer --job-time 50 --job-gap 10
succeeds "job with GS commands" $'task 12 sent, 11 bytes\ntask 12 ended, value 0x20261C1B (539368475)' \
  -p "$net" --family gs print "$receipt" --task 12 --wait

echo "# print: failures"
printer --trace --console --job-time 3600000
in_background -p "$net" print "$receipt" --task 7 --wait
until_line "$work/output" "task 7 sent"
tell_printer end 8 1
tell_printer start 7
tell_printer end 7 3
finished
judge "the end of another task is ignored" 0 $'task 7 sent, 11 bytes\ntask 7 ended, value 0x00000003 (3)' ""

check "job that does not end in time" 1 "task 7 sent, 11 bytes" \
  "like vexoctl: task 7 has not ended on $net after 200 ms: 1460 ?*" \
  -p "$net" print "$receipt" --task 7 --wait --wait-limit 200
in_background -p "$net" print "$receipt" --task 7 --wait
until_line "$work/output" "task 7 sent"
tell_printer drop
finished
judge "connection lost during the job" 1 "task 7 sent, 11 bytes" \
  "like vexoctl: lost the connection to $net before the end of task 7: 1226 ?*"

printer --trace --job-time 3600000
in_background -p "$net" --json print "$receipt" --task 7 --wait
until_line "$trace" "print data, 11 bytes, task 0007"
kill -INT "$background"
finished
judge "Ctrl-C during the job" 1 "" \
  'like {"error":{"code":1223,"message":"?*","action":"stopped before the end of task 7"}}'
printer_received "Ctrl-C switches monitoring off" \
  "$asked" "$switched_on" "$tagged" "print data, 11 bytes, task 0007" "$switched_off"

in_background -p "$net" --timeout 300 print "$receipt" --task 7 --wait
finished
judge "printer that is off" 1 "" "vexoctl: cannot open $net: $open_failed"

printer
kill -STOP "${printer_pids[-1]}"
check "printer that stops accepting data" 1 "" \
  "like vexoctl: cannot send all of $roll to $net, [1-9]* bytes were sent: $write_timeout" \
  -p "$net" --timeout 300 print "$roll" --task 7 --wait
kill -CONT "${printer_pids[-1]}"

echo "# print: file errors"
check "file that does not exist" 1 "" "like vexoctl: cannot open $work/nothing: 2 ?*" \
  -p "$net" print "$work/nothing" --task 7
check "empty file" 1 "" "like vexoctl: nothing to print in /dev/null: 38 ?*" -p "$net" print /dev/null --task 7
check "empty standard input" 1 "" "like vexoctl: nothing to print in the standard input: 38 ?*" -p "$net" print - --task 7
