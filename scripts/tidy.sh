#!/usr/bin/env bash
# Runs clang-tidy on the portable sources and the tools: scripts/tidy.sh [FILE...]
# Uses the compile commands of the host-fuzz build, which is made by clang.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

[ -e build/host-fuzz/compile_commands.json ] || cmake --preset host-fuzz >/dev/null
files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(python3 - <<'P'
import json, os
root = os.getcwd() + os.sep
names = {entry["file"] for entry in json.load(open("build/host-fuzz/compile_commands.json"))}
print("\n".join(sorted(name[len(root):] for name in names if name.startswith(root) and "/build/" not in name)))
P
)
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/host-fuzz
