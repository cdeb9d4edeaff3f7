#!/usr/bin/env bash
# Runs clang-tidy: scripts/tidy.sh [FILE...]
# Without files: on the library, the tools and the fuzz targets, as far as they build on this machine. Tests are left to
# the compilers' warnings, as GoogleTest's macros take most of the time. Uses the compile commands of a build by clang
# that compiles each file by itself.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cmake --preset host-fuzz -B build/tidy -DVEXO_UNITY_TOOLS=OFF >/dev/null
files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(python3 - <<'P'
import json, os
root = os.getcwd() + os.sep
names = {entry["file"] for entry in json.load(open("build/tidy/compile_commands.json"))}
print("\n".join(sorted(name[len(root):] for name in names if name.startswith((root + "src/", root + "tools/", root + "fuzz/")))))
P
)
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/tidy
