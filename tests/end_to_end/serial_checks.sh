# Printer on a serial line. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
serial=COM7,115200
line=${VEXO_WINEPREFIX:-$root/build/wineprefix}/dosdevices/com7 # Wine is up, and takes links for what it opens.

serial_printer() { printer --serial "$line" "$@"; }

echo "# serial line"
mkdir "$work/kept_by_line"
head -c 5000 /dev/urandom >"$work/cargo"
printf 'Total 9.99\n' >"$work/bill"
serial_printer --trace --status 5 --job-time 50 --job-gap 10 --store "$work/kept_by_line" --loader-delay 0
succeeds "width over a serial line" 576 -p $serial width get
succeeds "width set over a serial line" 640 -p $serial width set 640
succeeds "the width is kept" 640 -p $serial width get
succeeds "status over a serial line" $'status: 0xFFFFFFFA (4294967290)\nmonitoring: off' -p $serial status
succeeds "job over a serial line" $'task 7 sent, 11 bytes\ntask 7 ended, value 0x00000005 (5)' \
  -p $serial print "$work/bill" --task 7 --wait

# line_download KIND STORED_NAME: downloads the file and compares the stored one.
line_download() {
  local ok=no
  check "$1 over a serial line" 0 "$1 downloaded, 5000 bytes; the printer restarts" "like 0%*100%" \
    -p $serial download "$1" "$work/cargo"
  until_line "$trace" "stored $2"
  ! cmp -s "$work/kept_by_line/$2" "$work/cargo" || ok=yes
  record "$1 over a serial line: the stored file is identical" $ok "$trace"
}
line_download file file-1.bin
until_line "$trace" "back on"
succeeds "the printer has restarted" 640 -p $serial width get
line_download ymodem ymodem-cargo.bin
stop_printers

echo "# serial line: failures"
check "line without a printer" 1 "" "like vexoctl: cannot open $serial: 2 ?*" -p $serial width get
serial_printer --drop-after 19
check "printer that stops answering" 1 "" "like vexoctl: cannot read the print width of $serial: -332 ?*" -p $serial width get
stop_printers
