# Task numbers and tasks. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
echo "# tasks"
asked='getval "job_monitor"'
switched_on='setval "job_monitor" "on", by V1 reports'
switched_off='setval "job_monitor" "off"'

# tells_printer NAME WORD ARGUMENT... -- RECEIVED...: a command that succeeds, and what the printer is told meanwhile.
tells_printer() {
  local name=$1 word=$2 arguments=()
  shift 2
  until [ "$1" = -- ]; do
    arguments+=("$1")
    shift
  done
  shift
  printer --trace
  succeeds "$name" "$word" -p "$net" "${arguments[@]}"
  printer_received "$name: what the printer receives" "$@"
}

tells_printer "task number" "task 7 set" task set 7 -- \
  "$asked" "$switched_on" 'setval "process_id" "0007"' "$switched_off"
tells_printer "largest task number, as JSON" '{"task":9999}' --json task set 9999 -- \
  "$asked" "$switched_on" 'setval "process_id" "9999"' "$switched_off"
tells_printer "tasks cleared" "tasks cleared" task clear -- \
  "$asked" "$switched_on" "clear tasks, 0 waiting" "$switched_off"
tells_printer "tasks cleared, as JSON" '{"cleared":true}' task clear --json -- \
  "$asked" "$switched_on" "clear tasks, 0 waiting" "$switched_off"
tells_printer "task numbers reset" "task numbers reset" task reset -- \
  "$asked" "$switched_on" "GS ( H, task numbering reset" "$switched_off"
tells_printer "task numbers reset, as JSON" '{"reset":true}' --json task reset -- \
  "$asked" "$switched_on" "GS ( H, task numbering reset" "$switched_off"
tells_printer "task number in the other family" "task 12 set" --family gs task set 12 -- \
  "GS ( H, monitoring on, by 37 replies" "GS ( H, task number 0012" "GS ( H, monitoring off"
tells_printer "tasks cleared in the other family" "tasks cleared" --family gs task clear -- \
  "GS ( H, monitoring on, by 37 replies" "clear tasks, 0 waiting" "GS ( H, monitoring off"

printer --trace --monitoring v1
succeeds "task number for a printer that reports jobs already" "task 7 set" -p "$net" task set 7
printer_received "its monitoring stays on" "$asked" "$switched_on" 'setval "process_id" "0007"'

printer --trace --silent
fails "tasks of a silent printer" "cannot clear the tasks of $net: $no_answer" -p "$net" --timeout 100 task clear
fails "task numbers of a silent printer" "cannot reset the task numbers of $net: $no_answer" \
  -p "$net" --timeout 100 task reset
printer_received "its monitoring is switched off all the same" \
  "$asked" "$switched_on" "clear tasks, 0 waiting" "$switched_off" \
  "$asked" "$switched_on" "GS ( H, task numbering reset" "$switched_off"

echo "# finished tasks"
talking() { virtual_printer=$root/tools/simulators/talking_printer.py printer "$@"; }
talking task+7%20done 'cut|paper'
succeeds "each text on a line" $'task 7 done\ncut\npaper' -p "$net" --timeout 500 task wait 300
succeeds "the texts as JSON" '{"texts":["task 7 done","cut","paper"]}' -p "$net" --timeout 500 --json task wait 300
talking %E7%BA%B8%E5%B0%BD two%0D%0Alines
succeeds "text in Chinese; a line end in a text makes no new line" $'纸尽\ntwo  lines' \
  -p "$net" --timeout 500 task wait 300
talking bad%4
fails "text that ends in the middle of a character" \
  "cannot receive texts about finished tasks from $net: -1 Parameter is error. Please check the parameter is corrected." \
  -p "$net" --timeout 500 task wait 300
talking
fails "printer that says nothing" "cannot receive texts about finished tasks from $net: $read_timeout" \
  -p "$net" --timeout 100 task wait 100
