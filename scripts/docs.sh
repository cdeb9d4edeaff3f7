#!/usr/bin/env bash
# Generates the API reference of the public headers in build/api/html: scripts/docs.sh
# Fails if anything public lacks documentation, or a C function lacks that of a parameter or result.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p build/api
doxygen - <<'C_FUNCTIONS'
@INCLUDE = docs/Doxyfile
INPUT = include/vexo/extend.h include/vexo/printer.h include/vexo/error.h
USE_MDFILE_AS_MAINPAGE =
HTML_OUTPUT = c_functions
WARN_IF_INCOMPLETE_DOC = YES
WARN_NO_PARAMDOC = YES
C_FUNCTIONS
exec doxygen docs/Doxyfile
