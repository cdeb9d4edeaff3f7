# Reading and setting the print width. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
echo "# print width"
printer --width 576
succeeds "initial width" 576 -p "$net" width get
succeeds "width set" 640 -p "$net" width set 640
succeeds "width kept by the printer" 640 -p "$net" width get
succeeds "largest width set" 65535 -p "$net" width set 65535
succeeds "largest width kept" 65535 -p "$net" width get
succeeds "smallest width set" 0 -p "$net" width set 0
succeeds "smallest width kept" 0 -p "$net" width get
succeeds "leading zeros do not make an octal number" 640 -p "$net" width set 0640
succeeds "width as JSON, options after the command" '{"width":640}' width get --json -p "$net"
succeeds "width set as JSON" '{"width":576}' --json -p "$net" width set 576
succeeds "printer named by its device URI" 576 -p "vexo:/dev/bus/NET/DEVICE?ip=127.0.0.1+port=$port" width get
stop_printers
fails "stopped printer" "cannot open $net: $open_failed" -p "$net" --timeout 300 width get
check "stopped printer, as JSON" 1 "" \
  '{"error":{"code":-311,"message":"IO port open failed. Please confirm the configuration is correct.",'\
"\"action\":\"cannot open $net\"}}" \
  --json -p "$net" --timeout 300 width set 640
# If the locale is not installed, a warning precedes vexoctl's output.
user_locale=zh_CN.UTF-8 check "stopped printer, in Chinese" 1 "" \
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
succeeds "answer in pieces" 480 -p "$net" --timeout 20000 width get
printer --split 3000
fails "answer with a long gap" "cannot read the print width of $net: $read_timeout" -p "$net" width get
printer --drop-after 19
fails "connection lost before the answer" "cannot read the print width of $net: $read_failed" \
  -p "$net" width get
printer --drop-after 19 --once
fails "connection lost and not restored" "cannot read the print width of $net: $open_failed" \
  -p "$net" --timeout 300 width get
