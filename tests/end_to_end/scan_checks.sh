# Network scans. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2034,SC2154

# Details are always requested on port 9100, so each run uses its own address.
scan_address=127.$((RANDOM % 254 + 1)).$((RANDOM % 256)).2
scan_serial=$(printf 'VP%02X%02X%02X%02X' ${scan_address//./ })
scan_mac=$(printf '02:00:%02X:%02X:%02X:%02X' ${scan_address//./ })
# Another scan on this machine may use the port for a moment.
discoverable_printer() {
  local deadline=$((SECONDS + 60))
  until printer --address "$scan_address" --port 9100 --discoverable --trace "$@" 2>"$errors"; do
    [ $SECONDS -lt $deadline ] || { cat "$errors" && return 1; }
    sleep 0.2
  done
}

echo "# scan"
discoverable_printer --name Till
succeeds "a receipt printer" "NET,$scan_address  ready  Till  Virtual printer  $scan_serial  1.0.0  $scan_mac  Ethernet  9100\
  static  255.0.0.0  127.0.0.1  V1  203 dpi  80 mm  English" scan pos --target "$scan_address" --time 500
succeeds "a label printer as JSON" "{\"printers\":[{\"descriptor\":\"NET,$scan_address\",\"fields\":[\"$scan_address\",\
\"ready\",\"Till\",\"Virtual printer\",\"$scan_serial\",\"1.0.0\",\"$scan_mac\",\"Ethernet\",\"9100\",\"static\",\
\"255.0.0.0\",\"127.0.0.1\",\"V1\",\"203 dpi\",\"80 mm\",\"English\"]}]}" \
  --json scan label --target "$scan_address" --time 500
printer_received "details were requested" "network details wanted" "network details wanted"
discoverable_printer --state busy
succeeds "a printer that is not ready" "no printers answered" scan pos --target "$scan_address" --time 300
stop_printers
discoverable_printer --silent
succeeds "a printer that does not answer" '{"printers":[]}' --json scan pos --target "$scan_address" --time 300
usage_error "scan without a subcommand" "A subcommand is required" scan
usage_error "scan time of zero" "--time: '0' is not a whole number in 1..3600000" scan pos --time 0
usage_error "not an address" "--target: '10.0.1' is not an IPv4 address" scan label --target 10.0.1

# Two network namespaces, one for the host and one for the printers. Broadcast checks are skipped without the permission to
# create namespaces.
host_side=vexo-host-$$
printer_side=vexo-printers-$$
printer_count=50
make_network() {
  ip netns add "$host_side" && ip netns add "$printer_side" && ip netns exec "$host_side" true &&
    ip -n "$host_side" link add wire type veth peer name wire netns "$printer_side" &&
    ip -n "$host_side" address add 192.168.77.2/24 broadcast + dev wire || return 1
  local number
  for ((number = 0; number < printer_count; ++number)); do
    ip -n "$printer_side" address add "192.168.77.$((10 + number))/24" broadcast + dev wire || return 1
  done
  for side in "$host_side" "$printer_side"; do
    ip -n "$side" link set lo up && ip -n "$side" link set wire up || return 1
  done
}
remove_network() {
  ip netns delete "$host_side" || true
  ip netns delete "$printer_side" || true
} 2>/dev/null
cleanup=remove_network

# The Wine server owns the sockets of its programs, so it must run in the host's namespace. This needs a second prefix, a
# copy of the first.
make_host_prefix() {
  local prefix=${VEXO_WINEPREFIX:-$root/build/wineprefix}
  mkdir "$work/host_prefix"
  cp -a "$prefix"/{ready,.update-timestamp,dosdevices,*.reg} "$work/host_prefix"
  ln -s "$prefix/drive_c" "$work/host_prefix/drive_c"
}
# The socket buffer holds about twenty answers, so vexoctl runs with high priority to lose none.
run_on_host_side() {
  ip netns exec "$host_side" nice -n -15 env VEXO_WINEPREFIX="$work/host_prefix" LC_ALL=C "$root/scripts/wine.sh" "$vexoctl" "$@"
}

# finds_all_printers KIND PORT: checks that all printers answer a broadcast, sent from and to this port.
finds_all_printers() {
  local ok=no number
  for ((number = 0; number < printer_count; ++number)); do
    echo "NET,192.168.77.$((10 + number))  ready  VIRTUAL-$((number + 1))  255.255.255.0  192.168.77.1"
  done | sort >"$work/expected"
  run_on_host_side scan "$1" >"$work/output" 2>"$errors" </dev/null || true
  WINEPREFIX=$work/host_prefix wineserver -w
  sed -E 's/^(NET,[^ ]+ +ready +[^ ]+).* static +([0-9.]+ +[0-9.]+) .*/\1 \2/; s/ +/  /g' "$work/output" |
    sort >"$work/found"
  ! cmp -s "$work/expected" "$work/found" || ok=yes
  record "$printer_count printers answer scan $1" "$ok" "$work/output" "$errors"
  until_line "$work/trace" "scan from 192\.168\.77\.2:$2$" "$printer_count"
}

if make_network 2>"$work/network"; then
  make_host_prefix
  printf '#!/bin/sh\nexec ip netns exec %s "%s" "$@"\n' "$printer_side" "$virtual_printer" >"$work/printer_row"
  chmod +x "$work/printer_row"
  start_printer "$work/printer_row" "$work/trace" --address 192.168.77.10 --port 9100 --trace \
    --discoverable --count "$printer_count"
  finds_all_printers pos 3289
  finds_all_printers label 6000
  stop_printers
else
  echo "skipped - broadcasts, $(head -n 1 "$work/network")"
fi
remove_network
cleanup=:
