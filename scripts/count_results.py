#!/usr/bin/env python3
"""Counts the tests in GoogleTest's XML results: count_results.py FOLDER prints "PASSED FAILED"."""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def main() -> int:
    files = sorted(pathlib.Path(sys.argv[1]).glob("*.xml"))
    if not files:
        print(f"no results in {sys.argv[1]}", file=sys.stderr)
        return 1
    tests = failures = 0
    for file in files:
        root = ElementTree.parse(file).getroot()
        tests += int(root.get("tests", 0)) - int(root.get("disabled", 0))
        failures += int(root.get("failures", 0)) + int(root.get("errors", 0))
    print(tests - failures, failures)
    return 0


if __name__ == "__main__":
    sys.exit(main())
