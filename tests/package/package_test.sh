#!/usr/bin/env bash
# Tests the package: installation and ZIP, the examples built with it outside this tree and run with a virtual printer, and
# reproducible builds.
#
# package_test.sh [BUILD [VIRTUAL_PRINTER]]: the folder of a Windows build, and a virtual printer for this machine.
# shellcheck disable=SC2034,SC2154
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=$(realpath "${1:-$root/build/windows-x64}")
virtual_printer=$(realpath "${2:-$root/build/host-release/bin/virtual_printer}")
work=$(mktemp -d)
source "$root/scripts/processes.sh"
source "$root/tests/end_to_end/checks.sh"
trap 'stop_printers; release_wine; rm -rf "$work"' EXIT
hold_wine

toolchain=$root/cmake/windows-x64.cmake
package=$work/package
hosts=$work/hosts

# step NAME COMMAND...: a check that passes if the command succeeds.
step() {
  local name=$1 ok=no
  shift
  ! "$@" >"$work/log" 2>&1 || ok=yes
  record "$name" "$ok" "$work/log"
}

# host NAME STATUS OUTPUT ARGUMENT...: runs an example and compares its exit status and output.
host() {
  local name=$1 wanted=$2 expected=$3 ok=no status=0
  shift 3
  "$root/scripts/wine.sh" "$@" >"$work/output" 2>"$errors" </dev/null || status=$?
  tr -d '\r' <"$work/output" >"$work/lines"
  [ "$status" = "$wanted" ] && as_expected "$expected" "$work/lines" && ok=yes
  echo "$status" >"$work/status"
  record "$name" "$ok" "$work/status" "$work/lines" "$errors"
}

echo "# version"
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
step "the changelog begins with version $version" \
  test "$(sed -n 's/^## //p' "$root/CHANGELOG.md" | head -n 1)" = "$version"

echo "# package"
step "install" cmake --install "$build" --prefix "$package"
files_of() { (cd "$1" && find . -type f | sort); }
step "pack" cpack --config "$build/CPackConfig.cmake" -B "$work/packed"
unpack() {
  python3 -m zipfile -e "$work"/packed/vexo-extend-*-windows-x64.zip "$work/unpacked" &&
    diff <(files_of "$package") <(files_of "$work"/unpacked/vexo-extend-*)
}
step "the ZIP contains the installed files" unpack
no_names_of_folders() { ! grep -rlF -e "$root" "$package"; }
step "the package contains no folder names of this machine" no_names_of_folders

# A host's project outside this tree, with the unpacked package.
cp -r "$package/share/doc/vexo-extend/examples" "$hosts"
make_hosts() {
  cmake -S "$hosts" -B "$hosts/build" -G Ninja -D CMAKE_TOOLCHAIN_FILE="$toolchain" -D CMAKE_BUILD_TYPE=Release \
    -D CMAKE_PREFIX_PATH="$(echo "$work"/unpacked/vexo-extend-*)" && cmake --build "$hosts/build"
}
step "find_package builds the examples" make_hosts
with_pkg_config() {
  local flags
  read -r -a flags < <(PKG_CONFIG_LIBDIR=$package/lib/pkgconfig pkg-config --cflags --libs vexo-extend)
  x86_64-w64-mingw32-gcc-posix "$hosts/print_width.c" "${flags[@]}" -o "$package/bin/print_width.exe"
}
step "pkg-config builds an example" with_pkg_config

# An import library and a linker compatible with Microsoft's. No C library is available for them, so the host uses none.
with_module_definition() {
  cat >"$work/host.c" <<'HOST'
#include "vexo/extend.h"
int start(void) {
  char version[8];
  return GetExtendVersion(version, sizeof version) == 0 && version[6] == '2' && ScanSnmp() == -4 ? 42 : 1;
}
HOST
  llvm-dlltool -m i386:x86-64 -d "$package/lib/vexoextend.def" -l "$work/vexoextend.lib" &&
  clang --target=x86_64-pc-windows-msvc -ffreestanding -I "$package/include" -c "$work/host.c" -o "$work/host.obj" &&
  lld-link /nologo /entry:start /subsystem:console /nodefaultlib "/out:$package/bin/host.exe" "$work/host.obj" \
    "$work/vexoextend.lib"
}
step "import library from the module definition" with_module_definition
host "a host with that import library" 42 "" "$package/bin/host.exe"

echo "# examples"
mkdir "$work/store"
printer --width 576 --store "$work/store" --restart-time 0
host "print width" 0 "640 dots" "$hosts/build/print_width.exe" "$net" 640
host "print width, by pkg-config" 0 "640 dots" "$package/bin/print_width.exe" "$net"
printf 'receipt\n' >"$work/receipt"
host "job monitor" 0 "task 7 started"$'\n'"task 7 ended"$'\n'"printed, value 00000000" \
  "$hosts/build/job_monitor.exe" "$net" "$work/receipt"
host "job monitor, no such file" 1 "" "$hosts/build/job_monitor.exe" "$net" "$work/none"
head -c 10000 /dev/urandom >"$work/font"
host "download" 0 "like *Completed...*" "$hosts/build/download.exe" "$net" "$work/font"
step "download: the stored file is identical" cmp "$work/font" "$work/store/font-1.bin"
host "download of an empty file" 1 "like *failed*" "$hosts/build/download.exe" "$net" /dev/null
address=127.$((RANDOM % 254 + 1)).$((RANDOM % 256)).2
printer --address "$address" --port 9100 --discoverable --width 512
host "first printer found" 0 "found NET,$address"$'\n'"the first one prints 512 dots wide"$'\n'"setting 576 dots: success (0)" \
  "$hosts/build/first_printer_found.exe" "$address"
stop_printers
host "no printer found" 1 "" "$hosts/build/first_printer_found.exe" "$address"

echo "# reproducible"
# The same sources in another folder, at another time.
build_again() {
  mkdir "$work/again" && git -C "$root" ls-files -z --cached --others --exclude-standard | (cd "$root" && xargs -0 cp --parents -t "$work/again") &&
    cmake -S "$work/again" -B "$work/again/build/again" -G Ninja -D CMAKE_TOOLCHAIN_FILE="$work/again/cmake/windows-x64.cmake" \
      -D CMAKE_BUILD_TYPE=Release -D VEXO_BUILD_TESTS=OFF -D VEXO_BUILD_TOOLS=OFF &&
    cmake --build "$work/again/build/again" --target vexoextend &&
    cmp "$build/bin/vexoextend.dll" "$work/again/build/again/bin/vexoextend.dll" &&
    cmp "$build/lib/libvexoextend.dll.a" "$work/again/build/again/lib/libvexoextend.dll.a"
}
step "a second build gives the same DLL and import library" build_again

echo
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
