# Downloads of files, fonts and firmware. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
kept=$work/kept
mkdir "$kept"

blob=$work/blob
head -c 5000 /dev/urandom >"$blob"

# segment LENGTH BYTES: prints a firmware segment whose header announces LENGTH bytes, followed by BYTES random bytes.
segment() {
  printf 'HEAD%b' "\\x$(printf '%02x' $(($1 % 256)))\\x$(printf '%02x' $(($1 / 256)))\\0\\0"
  head -c 68 /dev/zero
  head -c "$2" /dev/urandom
}
image=$work/image
{ segment 3000 3000 && segment 0 0; } >"$image"

# loading_printer [OPTION...]: starts a printer that stores downloads and restarts without delay.
loading_printer() { printer --store "$kept" --loader-delay 0 --restart-time 0 "$@"; }

# downloads NAME STORED_NAME FILE PROGRESS OUTPUT ARGUMENT...: downloads the file, waits until the printer has restarted,
# and compares the stored file.
restarts=0
downloads() {
  local ok=no
  check "$1" 0 "$5" "$4" -p "$net" download "${@:6}"
  restarts=$((restarts + 1))
  until_line "$trace" "back on" $restarts
  ! cmp -s "$kept/$2" "$3" || ok=yes
  record "$1: the stored file is identical" $ok "$trace"
}

echo "# download"
loading_printer
done="5000 bytes; the printer restarts"
downloads "file" file-1.bin "$blob" $'0%\n33%\n66%\n100%' "file downloaded, $done" file "$blob"
downloads "font" font-1.bin "$blob" $'0%\n20%\n40%\n60%\n80%\n100%' "font downloaded, $done" \
  font "$blob" --packet-size 1000
downloads "file by YModem" ymodem-blob.bin "$blob" $'0%\n20%\n40%\n60%\n80%\n100%' "ymodem downloaded, $done" \
  ymodem "$blob"
downloads "firmware" firmware-1.bin "$image" \
  $'32%\n64%\n95%\nvexoctl: segment 1 of 2 sent\nvexoctl: segment 2 of 2 sent\n100%' \
  "firmware downloaded, 3152 bytes; the printer restarts" firmware "$image"
downloads "file, as JSON" file-2.bin "$blob" $'{"percent":0}\n{"percent":33}\n{"percent":66}\n{"percent":100}' \
  '{"downloaded":"file","bytes":5000}' file "$blob" --json

# The host may connect again before the printer has read the command to start its loader.
loading_printer
kill -STOP "${printer_pids[-1]}"
exec {connection}<>"/dev/tcp/127.0.0.1/$printer_port"
printf '\e\x1c& V1 do "dfu"\r\n' >&"$connection"
exec {connection}>&-
exec {connection}<>"/dev/tcp/127.0.0.1/$printer_port"
segment 5 0 >&"$connection"
kill -CONT "${printer_pids[-1]}"
ok=no
[ "$(timeout 60 head -c1 <&"$connection" | od -An -tx1)" != " 00" ] || ok=yes
record "host that reconnects before the loader runs" $ok "$trace"
exec {connection}>&-

loading_printer --fault bad-checksum@1
check "verbose download with a repeated package" 0 "file downloaded, $done" \
  "like *filename =$blob*package 1*failed:Slave Response Failed...*package 2*Completed..." \
  -p "$net" download file "$blob" --verbose

echo "# download: failures"
mode_refused="-6006 the printer did not enter its download mode"
no_data_answer="-6008 the printer does not answer"
data_refused="-6009 the printer refused the data or did not confirm it"

# stops NAME LAST_LINE ARGUMENT...: checks a download that fails after some progress.
stops() {
  check "$1" 1 "" "like $2" -p "$net" --timeout 50 download "${@:3}"
}
loading_printer --fault refuse@mode
fails "printer that refuses a file" \
  "cannot download $blob to $net, stopped at the switch into the download mode: $mode_refused" \
  -p "$net" download file "$blob"
fails "printer that is not in its loader" "cannot download $blob to $net, stopped at the handshake: $no_data_answer" \
  -p "$net" --timeout 50 download ymodem "$blob" --in-loader
loading_printer --fault refuse@1x4
stops "package that is not confirmed" \
  "0%*vexoctl: cannot download $blob to $net, stopped after 1 of 3 packages, 0%: $data_refused" file "$blob"
loading_printer --fault refuse@1
stops "firmware that the printer refuses" \
  "*95%*vexoctl: cannot download $image to $net, stopped at the body of segment 1 of 2, 95%: $data_refused" \
  firmware "$image"
loading_printer --fault refuse@mode
stops "failure as JSON" "{\"error\":{\"code\":-6006,\"message\":\"${mode_refused#* }\",\"action\":\"cannot download *\"}}" \
  file "$blob" --json

loading_printer --trace --fault silence@1x4
in_background -p "$net" download file "$blob"
until_line "$trace" "package 1, "
kill -INT "$background"
finished
judge "Ctrl-C during a download" 1 "" \
  "like *vexoctl: cannot download $blob to $net, interrupted after 1 of 3 packages, 0%: -6004 cancelled"
stop_printers

echo "# download: errors found before the printer is contacted"
nobody=NET,127.0.0.1,1
{ segment 5 5 && segment 10 9; } >"$work/cut_body"
{ segment 5 5 && printf abc; } >"$work/cut_header"
: >"$work/empty"
cp "$blob" "$work/字体.bin"
# file_refused NAME TEXT ARGUMENT...: checks a download that fails before the connection is made.
file_refused() { check "$1" 1 "" "like vexoctl: $2" -p "$nobody" download "${@:3}"; }
file_refused "image with an incomplete body" \
  "$work/cut_body is not a firmware image: the segment at offset 81 announces a body of 10 bytes, of which the file \
holds 9: 13 ?*" \
  firmware "$work/cut_body"
file_refused "image with an incomplete header" \
  "$work/cut_header is not a firmware image: the segment at offset 81 has 3 bytes of its 76-byte header only: 13 ?*" \
  firmware "$work/cut_header"
file_refused "file that does not exist" "cannot open $work/nothing: 2 ?*" file "$work/nothing"
file_refused "empty file" "nothing to download in $work/empty: -6007 the file is empty" font "$work/empty"
user_locale=zh_CN.UTF-8 check "empty file, in Chinese" 1 "" "like *: -6007 文件为空。" \
  -p "$nobody" download file "$work/empty"
file_refused "folder" "$work is a folder: 5 ?*" ymodem "$work"
user_locale=C.UTF-8 file_refused "name outside the code page" \
  "cannot use the name $work/字体.bin, which has characters outside code page 1252; rename the file: 1113 ?*" \
  file "$work/字体.bin"
file_refused "invalid loader descriptor" "cannot open FOO: $bad_setting" firmware "$image" --loader FOO
usage_error "USB printer without a loader" "--loader is required" -p USB download firmware "$image"
usage_error "download without a subcommand" "A subcommand is required" -p BUF download
usage_error "no file" "FILE is required" -p BUF download font
usage_error "no printer to download to" "download requires --port" download file "$blob"
usage_error "two loaders" "--loader excludes --in-loader" -p BUF download ymodem "$blob" --in-loader --loader USB
for number in 0 65536 2k; do
  usage_error "not a packet size: '$number'" "--packet-size: '$number' is not a whole number in 1..65535" \
    -p BUF download font "$blob" --packet-size "$number"
done
for command in "" file font firmware ymodem; do
  # shellcheck disable=SC2086 # Zero words or one.
  check "help for 'download${command:+ $command}'" 0 "like *Usage: vexoctl download $command*Example*vexoctl *" "" \
    download $command --help
done
