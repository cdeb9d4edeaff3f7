# Creating, reading and checking configuration files. To be sourced by vexoctl_test.sh.
# shellcheck shell=bash disable=SC2154
echo "# configuration files"
bad_config="-12 The configuration file format is incorrect or does not exist. Contact the supplier."

config() {
  local name=$1 status=$2 output_lines=$3 error_lines=$4
  shift 4
  pushd "$work" >/dev/null || return
  check "$name" "$status" "$output_lines" "$error_lines" "$@"
  popd >/dev/null || return
}

longest=$(printf 'x%.0s' {1..64})
printf '[settings]\r\nlanguage = en\r\nfont=a=b\r\n\r\n[models]\r\n460,receipt,KM460,80 mm,,1,-2,3,4,0.1\r\n461,,%s,,,0,0,0,0,12\r\n' \
  "$longest" >"$work/models.txt"
size=$(stat -c %s "$work/models.txt")
config "file encoded from text" 0 "sdkconfig: 2 settings, 2 models, $size bytes" "" config encode models.txt
config "file under another name, as JSON" 0 "{\"file\":\"till.cfg\",\"settings\":2,\"models\":2,\"bytes\":$size}" "" \
  --json config encode models.txt --output till.cfg
ok=no
! grep -q KM460 "$work/sdkconfig" && cmp -s "$work/sdkconfig" "$work/till.cfg" && ok=yes
record "the stored file is encoded" "$ok"
shown="setting: language=en
setting: font=a=b
model: 460,receipt,KM460,80 mm,,1,-2,3,4,0.1
model: 461,,$longest,,,0,0,0,0,12"
config "file shown" 0 "$shown" "" config show sdkconfig
input=$work/sdkconfig config "file shown from standard input" 0 "$shown" "" config show -
config "file shown as JSON" 0 '{"settings":[{"key":"language","value":"en"},{"key":"font","value":"a=b"}],'\
'"models":[{"number":460,"texts":["receipt","KM460","80 mm",""],"values":[1,-2,3,4],"factor":0.1},'\
"{\"number\":461,\"texts\":[\"\",\"$longest\",\"\",\"\"],\"values\":[0,0,0,0],\"factor\":12.0}]}" "" \
  --json config show sdkconfig
config "file decoded" 0 "like *" "" config decode sdkconfig
ok=no
cmp -s "$work/models.txt" "$output" && ok=yes
record "decoded exactly" "$ok" "$output"

{
  printf 'lost=1\n[a]\nno sign\n=v\ntwo words=v\nk=two words\n%sx=v\nk=%sx\nlist=[1]\n' "$longest" "$longest"
  printf '460,a,KM460,,,1,2,3,4,5\n460,a,KM461,,,1,2,3,4,5\n462,a,KM460,,,1,2,3,4,5\n451,a,X,,,1,2,3,4,5\n'
  printf '463,a,KM452,,,1,2,3,4,5\n464,a\n4294967296,a,b,,,1,2,3,4,5\n465,a,b,,,1,2,3,4x,5\n465,a,b,,,1,2,3,4,five\n'
  printf '465,%sx,b,,,1,2,3,4,5\n465,a,,,,1,2,3,4,5\n466,a,b,\0,,1,2,3,4,5\n[c]\nunread\n' "$longest"
} >"$work/wrong.txt"
wrong="line 1: this is before the first section
line 3: a setting has the form key=value
line 4: the setting has no key
line 5: the key has several words
line 6: the value has several words
line 7: the key has more than 64 bytes
line 8: the value has more than 64 bytes
line 9: every '[' opens a section, and this is no section's name
line 11: a model with the number 460 is in line 10 already
line 12: a model with the name 'KM460' is in line 10 already
line 13: a model with the number 451 is built in already
line 14: a model with the name 'KM452' is built in already
line 15: a model has 10 fields, not 2
line 16: field 1 is not a whole number of 32 bits: '4294967296'
line 17: field 9 is not a whole number of 32 bits: '4x'
line 18: field 10 is not a number: 'five'
line 19: field 2 has more than 64 bytes
line 20: the model has no name
line 21: a model has 10 fields, not 4
line 21: a zero byte ends the line
line 22: every '[' opens a section, and the library reads only two"
config "wrong lines are named" 1 "" \
  "vexoctl: ${wrong//$'\n'/$'\n'vexoctl: }
vexoctl: 21 wrong lines in wrong.txt: $bad_config" config encode wrong.txt --output wrong.cfg
ok=yes
[ ! -e "$work/wrong.cfg" ] || ok=no
record "no file is made of them" "$ok"
config "a text is no configuration file" 1 "like *" "like *wrong line* in models.txt: $bad_config" config show models.txt
{ echo "[a]"; for i in {1..129}; do echo "k=v"; done; echo "[b]"; for i in {1..511}; do echo "$i,,n$i,,,0,0,0,0,0"; done; } |
  sed -E 's/^45[12],,n/9&/' >"$work/full.txt"
config "what the library has no room for" 1 "" "vexoctl: line 130: the library keeps only 128 settings
vexoctl: line 642: the library keeps only 512 models, its own included
vexoctl: 2 wrong lines in full.txt: $bad_config" config encode full.txt
{ echo "[a]"; for i in {1..128}; do echo "k=v"; echo "x"; done; for i in {1..520}; do echo "x"; done; } >"$work/long.txt"
config "lines that are not read, as JSON" 1 "" "like *{\"note\":\"line 771: the library reads only 770 lines\"}
{\"error\":{\"code\":-12,\"message\":\"${bad_config#-12 }\",\"action\":\"642 wrong lines in long.txt\"}}" \
  --json config encode long.txt
config "file that does not exist" 1 "" "like vexoctl: cannot open nothing: 2 ?*" config show nothing
config "output in a folder that does not exist" 1 "" "like vexoctl: cannot write no\\\\file: 3 ?*" \
  config encode models.txt --output 'no\file'
config "output that is the text itself" 1 "" "like vexoctl: cannot write models.txt: 32 ?*" \
  config encode models.txt --output models.txt
usage_error "config without a subcommand" "A subcommand is required" config
usage_error "no configuration file" "FILE is required" config show
for command in config "config encode" "config decode" "config show"; do
  # shellcheck disable=SC2086 # One or two words.
  check "help for '$command'" 0 "like *Usage: vexoctl $command *Example*vexoctl *" "" $command --help
done
