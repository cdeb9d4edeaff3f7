# Printer status and paper feed. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
echo "# status"
printer --status 5
succeeds "status, inverted by the library" \
  $'status: 0xFFFFFFFA (4294967290)\nmonitoring: off' -p "$net" status
succeeds "status as JSON" '{"status":4294967290,"monitoring":false}' --json -p "$net" status
succeeds "status with GS commands, which cannot query monitoring" \
  $'status: 0xFFFFFFFA (4294967290)\nmonitoring: unknown (this family of printers cannot be asked)' \
  -p "$net" --family gs status
succeeds "the same as JSON" '{"status":4294967290,"monitoring":null}' -p "$net" --family gs --json status
printer --status 0xFFFFFFFF --monitoring v1
succeeds "printer that reports jobs" $'status: 0x00000000 (0)\nmonitoring: on' -p "$net" status
printer --silent
fails "status of a silent printer" "cannot read the status of $net: $no_answer" -p "$net" --timeout 100 status
user_locale=zh_CN.UTF-8 check "status of a silent printer, in Chinese" 1 "" \
  "like *vexoctl: cannot read the status of $net: $no_answer_chinese" -p "$net" --timeout 100 status
check "status of a silent printer as JSON" 1 "" \
  '{"error":{"code":-7003,"message":"the printer does not answer",'\
"\"action\":\"cannot read the status of $net\"}}" \
  --json -p "$net" --timeout 100 status

echo "# paper"
printer --trace
succeeds "paper fed" "paper fed" -p "$net" feed
succeeds "paper fed, as JSON" '{"fed":true}' -p "$net" --json feed
printer_received "the printer received both commands" 'do "print_feedform", paper fed' 'do "print_feedform", paper fed'
fails "paper feed of a stopped printer" "cannot open $net: $open_failed" -p "$net" --timeout 300 feed
