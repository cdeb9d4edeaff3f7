# Versions, descriptors and ports without a printer. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
echo "# versions"
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
succeeds "version" "vexoextend $version"$'\n'"vexoctl $version" version
succeeds "version as JSON" "{\"vexoextend\":\"$version\",\"vexoctl\":\"$version\"}" --json version
output=/dev/full check "result that cannot be written" 1 "" "like vexoctl: cannot write the result: 112 ?*" version

echo "# descriptors"
succeeds "network printer with the default port" \
  $'uri: vexo:/dev/bus/NET/DEVICE?ip=10.0.0.5+port=9100\nkind: 3 net\ntype: NET\ndevice: DEVICE
parameter: ip=10.0.0.5\nparameter: port=9100' \
  uri NET,10.0.0.5
succeeds "parallel port, without parameters" \
  $'uri: vexo:/dev/bus/LPT/lpt1\nkind: 1 parallel\ntype: LPT\ndevice: lpt1' \
  uri lpt1
succeeds "USB printer that is not connected" \
  $'uri: vexo:/dev/bus/USB/DEVICE?vid=1A2B+pid=0001\nkind: 2 usb\ntype: USB\ndevice: DEVICE
parameter: vid=1A2B\nparameter: pid=0001' \
  uri USB,VID_0X1A2B,PID_0X0001
succeeds "device URI, its incomplete parameter dropped" \
  $'uri: vexo:/dev/bus/NET/Till 3?ip=1.2.3.4\nkind: 3 net\ntype: NET\ndevice: Till 3\nparameter: ip=1.2.3.4' \
  uri 'vexo:/dev/bus/NET/Till 3?ip=1.2.3.4+port'
succeeds "buffer port, which has no URI" \
  $'uri: none (a port in memory has no address)\nkind: 6 buffer' \
  uri BUF
succeeds "descriptor as JSON" \
  '{"uri":"vexo:/dev/bus/NET/DEVICE?ip=10.0.0.5+port=9100","kind":3,"kindName":"net","type":"NET","device":"DEVICE",'\
'"parameters":[{"key":"ip","value":"10.0.0.5"},{"key":"port","value":"9100"}]}' \
  uri NET,10.0.0.5 --json
succeeds "buffer port as JSON" '{"uri":null,"kind":6,"kindName":"buffer"}' --json uri BUF
fails "network printer without an address" "cannot open NET: $bad_setting" uri NET
fails "network printer with an empty address" "cannot open NET,,9100: $bad_setting" uri NET,,9100
fails "unknown kind of port" "cannot open FOO,1: $bad_setting" uri FOO,1
fails "empty descriptor" "cannot open : $bad_setting" uri ""
fails "kind of port without a driver" "cannot open FILE,a.prn: $unsupported" uri FILE,a.prn
fails "unknown type in a device URI" "cannot open vexo:/dev/bus/TTY/1: $unsupported" uri vexo:/dev/bus/TTY/1
check "bad descriptor as JSON" 1 "" \
  '{"error":{"code":-301,"message":"IO invalid setting. Please confirm IO port configuration.",'\
'"action":"cannot open NET"}}' \
  --json uri NET

echo "# ports without a printer"
check "parallel port that does not exist" 1 "" "like vexoctl: cannot open LPT9: 2 ?*" -p LPT9 width get
fails "USB printer that is not connected" "cannot open USB,VID_0X1A2B,PID_0X0001: $no_usb_device" \
  -p USB,VID_0X1A2B,PID_0X0001 width get
fails "printer without an address" "cannot open NET: $bad_setting" -p NET width get
