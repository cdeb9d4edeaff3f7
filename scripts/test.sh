#!/usr/bin/env bash
# Builds and tests everything: scripts/test.sh
#
# The only command needed on a fresh machine: it installs what is missing. In order:
#   format        every source file as .clang-format has it
#   includes      in the direction of docs/architecture.md, system headers in their rooms alone
#   API reference everything public is documented
#   clang-tidy    library, tools and fuzz targets; its warnings are errors
#   host-asan     the portable core under AddressSanitizer and UndefinedBehaviorSanitizer
#   host-tsan     the same under ThreadSanitizer
#   host-fuzz     the portable core with clang's warnings; each fuzz target for FUZZ_SECONDS (default 10)
#   windows-x64   the DLL, its drivers and exports on real kernel objects, under Wine
#   end to end    vexoctl and the virtual printer as separate processes
#   package       what is installed; the examples, built against it; the same DLL from another build
# Goes on after a failure and ends with a line "N passed, N failed".
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/results.sh
source scripts/processes.sh

scripts/prepare.sh || exit 1

run_step format scripts/format.sh --check
run_step includes scripts/check_includes.py
run_step "API reference" scripts/docs.sh
run_step "clang-tidy" scripts/tidy.sh

for preset in host-asan host-tsan; do
  if run_step "build $preset" build_preset "$preset"; then
    run_tests "$preset"
  fi
done

if run_step "build host-fuzz" build_preset host-fuzz; then
  run_script "fuzz targets" scripts/fuzz.sh "${FUZZ_SECONDS:-10}"
fi

if run_step "build windows-x64" build_preset windows-x64; then
  hold_wine || note_failure "Wine"
  run_tests windows-x64
  run_script "end to end" tests/end_to_end/vexoctl_test.sh build/windows-x64/bin/vexoctl.exe build/host-asan/bin/virtual_printer
  run_script "package" tests/package/package_test.sh build/windows-x64 build/host-asan/bin/virtual_printer
  release_wine
fi

print_summary
