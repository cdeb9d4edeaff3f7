#!/usr/bin/env bash
# Runs clang-tidy on the portable sources and the tools, or on single files: scripts/tidy.sh [FILE...]
# Uses the compile commands of a clang build without unity builds.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cmake --preset host-fuzz -B build/tidy -DVEXO_UNITY_TOOLS=OFF >/dev/null
files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(python3 - <<'P'
import json, os
root = os.getcwd() + os.sep
names = {entry["file"] for entry in json.load(open("build/tidy/compile_commands.json"))}
print("\n".join(sorted(name[len(root):] for name in names if name.startswith(root) and "/build/" not in name)))
P
)
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/tidy
