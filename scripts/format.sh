#!/usr/bin/env bash
# Formats the C and C++ sources: scripts/format.sh [--check]
# With --check, only reports unformatted lines and fails if there are any.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

mode=(-i)
[ "${1:-}" != --check ] || mode=(--dry-run --Werror)
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.hpp' '*.c' '*.cpp' | xargs -0 -r clang-format "${mode[@]}"
