# Task numbers and tasks. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
echo "# tasks"
asked='getval "job_monitor"'
switched_on='setval "job_monitor" "on", by V1 reports'
switched_off='setval "job_monitor" "off"'

# sends NAME OUTPUT ARGUMENT... -- RECEIVED...: checks a command that succeeds and the data received by the printer.
sends() {
  local name=$1 word=$2 arguments=()
  shift 2
  until [ "$1" = -- ]; do
    arguments+=("$1")
    shift
  done
  shift
  printer --trace
  succeeds "$name" "$word" -p "$net" "${arguments[@]}"
  printer_received "$name: data received by the printer" "$@"
}

sends "task number" "task 7 set" task set 7 -- \
  "$asked" "$switched_on" 'setval "process_id" "0007"' "$switched_off"
sends "largest task number, as JSON" '{"task":9999}' --json task set 9999 -- \
  "$asked" "$switched_on" 'setval "process_id" "9999"' "$switched_off"
sends "tasks cleared" "tasks cleared" task clear -- \
  "$asked" "$switched_on" "clear tasks, 0 waiting" "$switched_off"
sends "tasks cleared, as JSON" '{"cleared":true}' task clear --json -- \
  "$asked" "$switched_on" "clear tasks, 0 waiting" "$switched_off"
sends "task numbers reset" "task numbers reset" task reset -- \
  "$asked" "$switched_on" "GS ( H, task numbering reset" "$switched_off"
sends "task numbers reset, as JSON" '{"reset":true}' --json task reset -- \
  "$asked" "$switched_on" "GS ( H, task numbering reset" "$switched_off"
sends "task number with GS commands" "task 12 set" --family gs task set 12 -- \
  "GS ( H, monitoring on, by 37 replies" "GS ( H, task number 0012" "GS ( H, monitoring off"
sends "tasks cleared with GS commands" "tasks cleared" --family gs task clear -- \
  "GS ( H, monitoring on, by 37 replies" "clear tasks, 0 waiting" "GS ( H, monitoring off"

printer --trace --monitoring v1
succeeds "task number for a printer that already reports jobs" "task 7 set" -p "$net" task set 7
printer_received "its monitoring stays on" "$asked" "$switched_on" 'setval "process_id" "0007"'

printer --trace --silent
fails "tasks of a silent printer" "cannot clear the tasks of $net: $no_answer" -p "$net" --timeout 100 task clear
fails "task numbers of a silent printer" "cannot reset the task numbers of $net: $no_answer" \
  -p "$net" --timeout 100 task reset
printer_received "monitoring is switched off nevertheless" \
  "$asked" "$switched_on" "clear tasks, 0 waiting" "$switched_off" \
  "$asked" "$switched_on" "GS ( H, task numbering reset" "$switched_off"

echo "# finished tasks"
talking() { virtual_printer=$root/tools/simulators/talking_printer.py printer "$@"; }
talking task+7%20done 'cut|paper'
succeeds "each text on a line" $'task 7 done\ncut\npaper' -p "$net" --timeout 500 task wait 300
succeeds "the texts as JSON" '{"texts":["task 7 done","cut","paper"]}' -p "$net" --timeout 500 --json task wait 300
talking %E7%BA%B8%E5%B0%BD two%0D%0Alines
succeeds "text in Chinese; a line end in a text does not start a line" $'纸尽\ntwo  lines' \
  -p "$net" --timeout 500 task wait 300
talking bad%4
fails "text with an incomplete escape" \
  "cannot receive texts about finished tasks from $net: -1 Parameter is error. Please check the parameter is corrected." \
  -p "$net" --timeout 500 task wait 300
talking
fails "printer without texts" "cannot receive texts about finished tasks from $net: $read_timeout" \
  -p "$net" --timeout 100 task wait 100
