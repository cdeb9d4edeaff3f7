# Monitoring of job events. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
asked='getval "job_monitor"'
switched_on='setval "job_monitor" "on", by V1 reports'
switched_off='setval "job_monitor" "off"'
listening="vexoctl: listening to"

# monitor ARGUMENT...: starts a monitor of the printer and waits until it listens.
monitor() {
  in_background -p "$net" --timeout 500 monitor "$@"
  until_line "$errors" "listening to"
}

echo "# monitor"
printer --trace --console
monitor
tell_printer start 7
until_line "$work/output" "start task 7"
tell_printer end 7 10
until_line "$work/output" "end task 7"
kill -INT "$background"
finished
judge "events, then Ctrl-C" 0 "like $time start task 7"$'\n'"$time end task 7 value 0x0000000A (10)" "$listening $net"
printer_received "Ctrl-C switches monitoring off" "$asked" "$switched_on" "$switched_off"

printer --trace --console
monitor --json --count 2
tell_printer start 9999
tell_printer end 9999 0xFFFFFFFF
tell_printer start 1
finished
judge "limited number of events, as JSON" 0 \
  "like {\"time\":\"$time\",\"event\":\"start\",\"task\":9999,\"value\":0}"$'\n'\
"{\"time\":\"$time\",\"event\":\"end\",\"task\":9999,\"value\":4294967295}" \
  "{\"note\":\"listening to $net\"}"
check "limited time without an event" 0 "" "$listening $net" -p "$net" monitor --for 100
printer_received "every exit switches monitoring off" \
  "$asked" "$switched_on" "$switched_off" "$asked" "$switched_on" "$switched_off"

printer --job-time 50 --job-gap 10
monitor --count 4
for task in 7 8; do
  run_vexoctl -p "$net" print - --task $task --wait <<<"Total 9.99" >"$work/print" 2>&1 || cat "$work/print"
done
finished
judge "jobs that another host prints" 0 \
  "like $time start task 7"$'\n'"$time end task 7 *"$'\n'"$time start task 8"$'\n'"$time end task 8 *" \
  "$listening $net"

printer --console
monitor --family gs --count 2
tell_printer start 12
tell_printer end 12
finished
judge "events with GS commands" 0 \
  "like $time start task 12"$'\n'"$time end task 12 value 0x20261C1B (539368475)" "$listening $net"

printer --console
monitor --count 3
tell_printer garbage 3000
tell_printer start 7
tell_printer garbage 5
tell_printer end 7 258
tell_printer state 8
tell_printer start 9
finished
judge "events among noise" 0 \
  "like $time start task 7"$'\n'"$time end task 7 value 0x00000102 (258)"$'\n'"$time start task 9" "$listening $net"

printer --trace --console --monitoring v1
monitor
tell_printer start 7
until_line "$work/output" "start task 7"
kill -INT "$background"
finished
judge "printer that already reports jobs" 0 "like $time start task 7" "$listening $net"
printer_received "its monitoring stays on" "$asked" "$switched_on"

printer --silent
check "silent printer" 0 "" "$listening $net" -p "$net" monitor --for 100

printer --trace --console
output=/dev/full monitor
tell_printer start 7
finished
judge "event that cannot be written" 1 "" "like $listening $net"$'\n'"vexoctl: cannot write the result: 112 ?*"
printer_received "monitoring is switched off nevertheless" "$asked" "$switched_on" "$switched_off"

echo "# monitor: lost connections"
lost="vexoctl: lost the connection to"
again="again; events in between may be missing"
printer --trace --console
monitor --count 2
tell_printer start 7
until_line "$work/output" "start task 7"
tell_printer drop
until_line "$errors" "$again"
until_line "$trace" '#2 -> .*setval "job_monitor" "on"' # Before that, the printer may not have accepted the connection.
tell_printer end 7
finished
judge "connection lost and restored at once" 0 \
  "like $time start task 7"$'\n'"$time end task 7 value 0x00000000 (0)" \
  "like $listening $net"$'\n'"$lost $net: 1226 ?*"$'\n'"vexoctl: connected to $net $again"
printer_received "monitoring is switched on again" "$asked" "$switched_on" "$switched_on" "$switched_off"

printer --console
monitor --count 2
tell_printer start 7
until_line "$work/output" "start task 7"
stop_printers
until_line "$errors" "$lost $net"
printer --console --port "$port"
until_line "$errors" "$again"
tell_printer start 8
finished
judge "printer restarted" 0 "like $time start task 7"$'\n'"$time start task 8" \
  "like $listening $net"$'\n'"$lost $net: ?*"$'\n'"vexoctl: connected to $net $again"

printer
monitor
stop_printers
until_line "$errors" "$lost $net"
kill -INT "$background"
finished
judge "Ctrl-C while the printer is off" 0 "" \
  "like $listening $net"$'\n'"$lost $net: ?*"

echo "# monitor: hosts that share a printer"
# works TASK...: prints these jobs as a host and sets the width to each task number.
works() {
  local task
  for task in "$@"; do
    run_vexoctl -p "$net" print - --task "$task" --wait <<<"Total 9.99"
    run_vexoctl -p "$net" width set "$task"
  done
}
# worked TASK...: prints the expected output of works.
worked() {
  local task
  for task in "$@"; do
    printf 'task %d sent, 11 bytes\ntask %d ended, value 0x00000000 (0)\n%d\n' "$task" "$task" "$task"
  done
}

printer --trace --job-time 50 --job-gap 10
monitor --count 12
works 101 102 103 >"$work/first_host" 2>&1 &
first_host=$!
works 201 202 203 >"$work/second_host" 2>&1
wait "$first_host"
finished
worked 101 102 103 >"$work/first_expected"
worked 201 202 203 >"$work/second_expected"
ok=yes
cmp "$work/first_expected" "$work/first_host" && cmp "$work/second_expected" "$work/second_host" || ok=no
record "two hosts print and change the width at once" $ok "$work/first_host" "$work/second_host" "$errors"
# The printer prints one job at a time: each start is followed by the end of the same job.
ok=yes
sed -E 's/^[^ ]+ (start|end) task ([0-9]+).*/\1 \2/' "$work/output" >"$work/events"
[ "$(paste -d ' ' - - <"$work/events" | sort)" = "$(printf 'start %d end %d\n' 10{1,1,2,2,3,3} 20{1,1,2,2,3,3})" ] || ok=no
record "a third host receives the events of all jobs" $ok "$work/output" "$errors"
check "the last width is kept" 0 "like [12]03" "" -p "$net" width get
finish_trace
ok=yes
[ "$(grep -c 'print data, 11 bytes, task 0[12]0[123]$' "$trace")" = 6 ] || ok=no
record "the printer received all jobs with their numbers" $ok "$trace"

printer --console --once
monitor --count 2
tell_printer start 7
until_line "$work/output" "start task 7"
status=0
run_vexoctl -p "$net" --timeout 300 width get >"$work/second_host" 2>&1 || status=$?
ok=no
[ $status = 1 ] && as_expected "vexoctl: cannot open $net: $open_failed" "$work/second_host" && ok=yes
record "printer with a single connection: the second host is refused" $ok "$work/second_host"
tell_printer end 7
finished
judge "the first host still receives events" 0 \
  "like $time start task 7"$'\n'"$time end task 7 value 0x00000000 (0)" "$listening $net"
