# What scripts need in the background while they run vexoctl: virtual printers, and Wine's server. To be sourced; the
# script calls stop_printers and release_wine on the way out.
# shellcheck shell=bash disable=SC2034
scripts_folder=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
printer_pids=()
trace_pids=()
printer_port=
printer_console=

# start_printer PROGRAM TRACE_FILE [OPTION...]: starts a virtual printer, on a free port unless the options name one or a
# line, and waits until it takes connections. Sets printer_port, which means nothing when the printer is on a line alone.
# What the printer says from then on goes to TRACE_FILE.
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

# The input of the printer that is started next. Being open for reading, too, it never ends.
open_printer_console() {
  local folder
  [ -z "$printer_console" ] || exec {printer_console}>&-
  folder=$(mktemp -d)
  mkfifo "$folder/console"
  exec {printer_console}<>"$folder/console"
  rm -r "$folder"
}

# tell_printer WORD...: types a line at the console of the printer started last, which has the option --console.
tell_printer() { echo "$*" >&"$printer_console"; }

# plug_usb PROGRAM OUTPUT_FILE SERIAL [PIPE]: connects a USB printer of the maker's, whose device file is the named pipe,
# by the program usb_device, until unplug_usb.
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
  while kill -0 "$usb_pid" 2>/dev/null; do # Not for wait: bash may have forgotten it.
    sleep 0.05
  done
}

# Ends the printer that was started last.
stop_last_printer() {
  kill "${printer_pids[-1]}" 2>/dev/null || true
  wait "${printer_pids[-1]}" "${trace_pids[-1]}" 2>/dev/null || true
  unset 'printer_pids[-1]' 'trace_pids[-1]'
}

# Ends all printers; their traces are complete then.
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
