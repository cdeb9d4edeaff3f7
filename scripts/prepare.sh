#!/usr/bin/env bash
# Installs the packages needed for building and testing on Debian: scripts/prepare.sh
# Returns at once if nothing is missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build             # both builds
  g++-mingw-w64-x86-64-posix                    # the Windows build; the win32 variant has no std::thread
  wine wine64                                   # runs it
  clang clang-format clang-tidy                 # fuzz targets, second set of warnings, lint
  googletest                                    # test framework (sources)
  libasio-dev libcli11-dev nlohmann-json3-dev   # the tools
  llvm lld pkg-config                           # other linkers, and the package that they are given
  doxygen                                       # API reference
  socat                                         # serial lines
  iproute2                                      # networks to broadcast on
  python3                                       # counts of the test run, JSON checks
)

sudo=
[ "$(id -u)" -eq 0 ] || sudo=sudo
export DEBIAN_FRONTEND=noninteractive

# The version of the clang that this Debian has.
clang_version() {
  apt-cache depends clang 2>/dev/null | sed -n 's/.*Depends: clang-\([0-9]*\)$/\1/p' | head -n 1
}
[ -n "$(clang_version)" ] || $sudo apt-get update -qq
packages+=("libclang-rt-$(clang_version)-dev") # its sanitizers

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "installing: ${missing[*]}" >&2
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
