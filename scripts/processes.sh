# Background processes for scripts that run vexoctl: virtual printers and the Wine server. To be sourced; the script must
# call stop_printers and release_wine at its end.
# shellcheck shell=bash disable=SC2034
scripts_folder=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
printer_pids=()
trace_pids=()
printer_port=
printer_console=

# start_printer PROGRAM TRACE_FILE [OPTION...]: starts a virtual printer and waits until it accepts connections. Uses a free
# TCP port unless the options name a port, line or pipe. Sets printer_port (meaningless for lines and pipes). The printer's
# further output goes to TRACE_FILE.
start_printer() {
  local program=$1 trace=$2 output ready=
  shift 2
  local command=("$program")
  case $program in *.exe) command=("$scripts_folder/wine.sh" "$program") ;; esac
  [[ " $* " =~ " "--(port|serial|pipe)" " ]] || set -- --port 0 "$@"
  open_printer_console
  exec {output}< <(exec "${command[@]}" "$@" <&"$printer_console" {printer_console}>&-)
  printer_pids+=($!)
  read -r -t 60 ready <&"$output" || true
  ready=${ready%$'\r'}
  if [[ $ready != "virtual printer ready on "* ]]; then
    echo "the virtual printer does not start: ${ready:-no output}" >&2
    return 1
  fi
  printer_port=${ready##*:}
  cat <&"$output" >"$trace" &
  trace_pids+=($!)
  exec {output}<&-
}

# Creates the standard input of the next printer. It is also open for reading, so the printer never sees its end.
open_printer_console() {
  local folder
  [ -z "$printer_console" ] || exec {printer_console}>&-
  folder=$(mktemp -d)
  mkfifo "$folder/console"
  exec {printer_console}<>"$folder/console"
  rm -r "$folder"
}

# tell_printer WORD...: sends a console command to the printer started last, which needs the option --console.
tell_printer() { echo "$*" >&"$printer_console"; }

# plug_usb PROGRAM OUTPUT_FILE SERIAL [PIPE]: simulates a connected USB printer with the program usb_device until
# unplug_usb. Its device file is the named pipe.
plug_usb() {
  local program=$1 output=$2
  shift 2
  : >"$output"
  exec {usb_input}> >(exec "$scripts_folder/wine.sh" "$program" "$@" >"$output")
  usb_pid=$!
  until grep -q "plugged in" "$output"; do
    kill -0 "$usb_pid" || return 1
    sleep 0.05
  done
}
unplug_usb() {
  exec {usb_input}>&-
  while kill -0 "$usb_pid" 2>/dev/null; do # `wait` may not know this process.
    sleep 0.05
  done
}

# Stops the printer that was started last.
stop_last_printer() {
  kill "${printer_pids[-1]}" 2>/dev/null || true
  wait "${printer_pids[-1]}" "${trace_pids[-1]}" 2>/dev/null || true
  unset 'printer_pids[-1]' 'trace_pids[-1]'
}

# Stops all printers. Their traces are complete afterwards.
stop_printers() {
  local pid
  for pid in "${printer_pids[@]}"; do
    kill "$pid" 2>/dev/null || true
  done
  for pid in "${printer_pids[@]}" "${trace_pids[@]}"; do
    wait "$pid" 2>/dev/null || true
  done
  printer_pids=() trace_pids=()
}

# Debian's wineserver ends with its last program, and a program that starts at that very moment fails. So one that only
# waits for its input is kept running; it has started when its first line is there.
hold_wine() {
  local attempt
  for attempt in 1 2 3; do
    coproc wine_holder { WINE_TIME_LIMIT=3600 exec "$scripts_folder/wine.sh" cmd /q 2>/dev/null; }
    wine_holder_pid=$!
    read -r -t 120 _ <&"${wine_holder[0]:-}" && return
    wait "$wine_holder_pid" || true
  done
  echo "Wine does not start" >&2
  return 1
}

release_wine() {
  [ -n "${wine_holder[1]:-}" ] || return 0
  eval "exec ${wine_holder[1]}>&-"
  wait "$wine_holder_pid" || true
}
