#!/usr/bin/env python3
"""Mutation testing: makes one small fault at a time in src/ and checks whether a test fails: scripts/mutate.py [OPTIONS]

A fault is a changed operator, constant or result code, a removed statement or a removed lock. For each fault, the
program builds the affected tests, runs them, and prints the fault if all pass. At the end it prints how many of the
faults that compile were caught. It works on copies of the sources in build/mutation, so the tree may be edited
meanwhile. Faults that no test can catch are listed with their reasons in scripts/mutants_not_caught.txt.
"""
import argparse
import concurrent.futures
import dataclasses
import filecmp
import os
import pathlib
import queue
import random
import re
import shutil
import signal
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutation"
KNOWN = ROOT / "scripts" / "mutants_not_caught.txt"

# Folders and files that only the Windows build compiles.
WINDOWS_ROOMS = re.compile(r"src/(.*/windows/|port/socket/|discovery/(network_scan|usb_hotplug)|port/usb_enumeration|"
                           r"api/(network_scan|usb_list|usb_monitor)|platform/(sockets|guarded_handle|global_text))")

HOST_TESTS = ["core_tests"]
# A missing lock rarely changes a result. ThreadSanitizer detects it in the tests that use threads.
THREAD_TESTS = "--gtest_filter=*Thread*:SdkConfig*:ScanFollowUps*"
# Test programs for each file of the Windows build, in the order they run. The first match counts.
WINDOWS_TESTS = [
    (r"src/port/socket/", ["socket_port_tests", "hostile_peers_tests", "network_scan_tests"]),
    (r"src/port/windows/serial", ["serial_port_tests"]),
    (r"src/port/windows/parallel", ["file_port_tests", "parallel_port_tests"]),
    (r"src/port/(windows/)?(usb_port|usb_enumeration|device_interfaces)", ["usb_enumeration_tests", "file_port_tests"]),
    (r"src/port/windows/(file_port|overlapped)", ["file_port_tests", "serial_port_tests", "parallel_port_tests",
                                                  "usb_enumeration_tests"]),
    (r"src/port/windows/", ["hostile_peers_tests", "usb_enumeration_tests", "serial_port_tests", "export_tests",
                            "allocation_fault_tests"]),
    (r"src/discovery/network_scan|src/api/network_scan", ["network_scan_tests"]),
    (r"src/discovery/|src/api/usb_monitor", ["usb_monitor_tests"]),
    (r"src/api/usb_list", ["usb_enumeration_tests"]),
    (r"src/platform/windows/own_folder", ["own_folder_tests"]),
    (r"src/platform/windows/setup_api", ["usb_enumeration_tests"]),
    (r"src/platform/(windows/)?sockets", ["socket_port_tests", "network_scan_tests", "hostile_peers_tests"]),
    (r"src/platform/windows/(exception|dll_main|scoped_module)", ["export_tests", "allocation_fault_tests",
                                                                  "usb_monitor_tests"]),
    (r"", ["monitor_tests", "hostile_peers_tests", "socket_port_tests", "file_port_tests", "allocation_fault_tests",
           "export_tests"]),
]

SWAPS = [
    (r"==", "!="), (r"!=", "=="), (r"<=", "<"), (r">=", ">"), (r"(?<![<\-=>:\w])\s<\s(?!<)", " <= "),
    (r"\s>\s(?!>)", " >= "), (r"&&", "||"), (r"\|\|", "&&"), (r"\s\+\s", " - "), (r"\s-\s", " + "), (r"\s\*\s", " + "),
    (r"\s/\s", " * "), (r"\s%\s", " / "), (r"\+=", "-="), (r"-=", "+="), (r"\+\+", "--"), (r"(?<!-)--(?!-)", "++"),
    (r"!(?=[a-zA-Z_(])", ""), (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"\bstd::min\b", "std::max"),
    (r"\bstd::max\b", "std::min"), (r"\bbreak;", ";"), (r"\bcontinue;", ";"), (r"\|(?![|=])", "&"),
    (r"(?<!&)&(?=\s\d|\s0x)", "|"), (r"<<(?= 8)", ">>"), (r"\? (\w+) : (\w+)(?=[;,)])", r"? \2 : \1"),
]
NUMBER = re.compile(r"(?<![\w.\"'])(0x[0-9A-Fa-f]+|\d[\d']*)(?=[\sU;,)\]}{LuF]|$)")
CODE = re.compile(r"\bVEXO_(?:ERROR_[A-Z_]+|OK)\b")
STATEMENT = re.compile(r"^\s+(?!return|break|continue|using|static_assert|const\b|auto\b|case|default|goto|throw|delete|else|public|"
                       r"private|protected|friend|template|typedef|struct|class|enum|explicit|virtual|static\b|constexpr|inline)"
                       r"[\w:>\-.*()\[\]+&!~<, ]*(?:\(.*\)|[+\-|&*]?=[^=].*|\+\+|--)\s*;(?:\s*//.*)?$")
DECLARATION = re.compile(r"^\s+(?:[\w:]+(?:<[^;=]*>)?[&*]?\s+)+[&*]?\w+(?:\[.*\])?\s*(?:=|\{|;|\()")
LOCK = re.compile(r"^\s+const std::(?:lock_guard|unique_lock)<.*;$|^\s+std::unique_lock<.*;$|^\s+const (?:SpinGuard|SectionGuard|"
                  r"WinsockCountGuard) \w+;$")


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    before: str
    after: str

    def __str__(self):
        return f"{self.file}:{self.line}: {self.before.strip()}  ->  {self.after.strip() or '(dropped)'}"

    def key(self):
        return f"{pathlib.PurePath(self.file).name}: {self.before.strip()} -> {self.after.strip() or '(dropped)'}"


def code_part(line):
    """The line with strings and comments blanked out, at the same length."""
    out, i, quote = [], 0, None
    while i < len(line):
        c = line[i]
        if quote:
            out.append("_")
            if c == "\\":
                out.append("_")
                i += 1
            elif c == quote:
                quote = None
                out[-1] = c
        elif c == '"' or (c == "'" and not (i and line[i - 1].isalnum())):
            quote = c
            out.append(c)
        elif line.startswith("//", i):
            break
        else:
            out.append(c)
        i += 1
    return "".join(out)


def mutants_of(path):
    name = path.relative_to(ROOT).as_posix()
    lines = path.read_text(encoding="utf-8").split("\n")
    comment = False
    for number, line in enumerate(lines, 1):
        code = code_part(line)
        if "/*" in code:
            comment = "*/" not in code
            continue
        if comment:
            comment = "*/" not in code
            continue
        stripped = code.strip()
        if not stripped or stripped.endswith(("= delete;", "= default;")) or stripped.startswith(("#", "namespace", "using ", "static_assert", "template", "friend ")):
            continue
        found = set()

        def add(after):
            if after != line and after not in found:
                found.add(after)
                return True
            return False

        for pattern, by in SWAPS:
            for match in re.finditer(pattern, code):
                if pattern == r"\s>\s(?!>)" and "template" in code:
                    continue
                replaced = match.expand(by) if "\\" in by else by
                if add(line[: match.start()] + replaced + line[match.end():]):
                    yield Mutant(name, number, line, line[: match.start()] + replaced + line[match.end():])
        for match in NUMBER.finditer(code):
            text = match.group(1).replace("'", "")
            value = int(text, 16) if text.startswith("0x") else int(text)
            new = hex(value + 1) if text.startswith("0x") else str(value + 1)
            after = line[: match.start()] + new + line[match.end(1):]
            if add(after):
                yield Mutant(name, number, line, after)
        for match in CODE.finditer(code):
            other = "VEXO_ERROR_IO" if match.group(0) != "VEXO_ERROR_IO" else "VEXO_ERROR_PARAMETER"
            after = line[: match.start()] + other + line[match.end():]
            if add(after):
                yield Mutant(name, number, line, after)
        if LOCK.match(code):
            yield Mutant(name, number, line, "")
        elif STATEMENT.match(code) and not DECLARATION.match(code) and code.count("(") == code.count(")"):
            yield Mutant(name, number, line, ";")
        condition = re.search(r"\b(?:if|while) \((.+)\) \{$", code)
        if condition and code.count("(") == code.count(")") and " = " not in condition.group(1).replace("==", ""):
            start, end = condition.span(1)
            after = line[:start] + "!(" + line[start:end] + ")" + line[end:]
            if add(after):
                yield Mutant(name, number, line, after)


class WorkingCopy:
    """A copy of the sources with its builds. Tests one mutant at a time."""

    def __init__(self, number):
        self.folder = WORK / str(number)
        self.sources = self.folder / "sources"
        self.builds = set()

    def refresh(self):
        """Copies only changed files, so that only these are rebuilt."""
        listed = tracked()
        for name in listed:
            target = self.sources / name
            if not target.exists() or not filecmp.cmp(ROOT / name, target, shallow=False):
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(ROOT / name, target)
        kept = {self.sources / name for name in listed}
        for path in [path for path in self.sources.rglob("*") if path.is_file() and path not in kept]:
            path.unlink()

    def prepare(self, kind, targets):
        build = self.folder / kind
        if build not in self.builds:
            options = {
                "host": ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0"],
                "threads": ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DVEXO_SANITIZE=thread",
                            "-DVEXO_BUILD_TOOLS=OFF"],
                "windows": ["--toolchain", str(self.sources / "cmake" / "windows-x64.cmake"),
                            "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1"],
            }[kind]
            subprocess.run(["cmake", "-S", str(self.sources), "-B", str(build), "-G", "Ninja", *options], check=True,
                           stdout=subprocess.DEVNULL)
            self.builds.add(build)
        run(["cmake", "--build", str(build), "--target", *targets], 1200, check=True)
        return build


def run(command, seconds, check=False, env=None, cwd=None):
    """Runs a command and kills its process group. Returns whether it exited with 0 in time."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                               start_new_session=True, env=env, cwd=cwd)
    try:
        ok = process.wait(seconds) == 0
    except subprocess.TimeoutExpired:
        ok = False
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()
    if check and not ok:
        raise SystemExit(f"mutate.py: {' '.join(command)} fails without a fault")
    return ok


def tests_of(mutant, windows):
    if not windows:
        return HOST_TESTS
    return next(tests for pattern, tests in WINDOWS_TESTS if re.match(pattern, mutant.file))


def passes(working_copy, build, test):
    if build.name == "host":
        return run([str(build / "bin" / test), "--gtest_fail_fast", "--gtest_brief=1"], 60, cwd=build)
    if build.name == "threads":
        return run([str(build / "bin" / test), "--gtest_fail_fast", "--gtest_brief=1", THREAD_TESTS], 120, cwd=build)
    env = dict(os.environ, VEXO_WINEPREFIX=str(working_copy.folder / "wineprefix"), WINE_TIME_LIMIT="110")
    wine = str(working_copy.sources / "scripts" / "wine.sh")
    runner = {"serial_port_tests": ["run_serial_tests.sh"], "parallel_port_tests": ["run_parallel_tests.sh"]}.get(test)
    program = str(build / "bin" / f"{test}.exe")
    command = [wine, program] if not runner else [str(working_copy.sources / "tests" / "windows" / runner[0]), wine, program]
    return run([*command, "--gtest_fail_fast", "--gtest_brief=1"], 120, env=env, cwd=build)


def judge(working_copy, mutant, windows):
    """ "caught", "survived", or None for a fault that does not compile."""
    tests = tests_of(mutant, windows)
    lock = LOCK.match(mutant.before) and not mutant.after
    build = working_copy.prepare("windows" if windows else "threads" if lock else "host", tests)
    path = working_copy.sources / mutant.file
    original = path.read_text(encoding="utf-8")
    lines = original.split("\n")
    assert lines[mutant.line - 1] == mutant.before, mutant
    lines[mutant.line - 1] = mutant.after
    try:
        path.write_text("\n".join(lines), encoding="utf-8")
        if not run(["cmake", "--build", str(build), "--target", *tests], 600):
            return None
        return "survived" if all(passes(working_copy, build, test) for test in tests) else "caught"
    finally:
        path.write_text(original, encoding="utf-8")


def tracked(*folders):
    """Files of the working tree, committed or not."""
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", *folders], cwd=ROOT,
                            check=True, capture_output=True, text=True).stdout.split("\n")
    return [name for name in listed if name and (ROOT / name).is_file()]


def source_files():
    """The files of src/: portable ones, and those that only the Windows build compiles."""
    files = [name for name in tracked("src") if name.endswith((".cpp", ".h")) and "/linux/" not in name]
    windows = [name for name in files if WINDOWS_ROOMS.match(name)]
    return sorted(set(files) - set(windows)), sorted(windows)


def known_reasons():
    reasons = {}
    if KNOWN.exists():
        for line in KNOWN.read_text(encoding="utf-8").splitlines():
            if line and not line.startswith("#"):
                key, _, reason = line.partition("  # ")
                reasons[key.strip()] = reason.strip()
    return reasons


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--windows", action="store_true", help="test the Windows code, under Wine, instead of the portable code")
    parser.add_argument("--count", type=int, default=50, help="size of the random sample of faults (default: 50; 0: all)")
    parser.add_argument("--seed", type=int, default=None, help="seed of the sample; printed if not given")
    parser.add_argument("--file", action="append", default=[], help="a file of src/ or a part of its path; may be repeated")
    parser.add_argument("--jobs", type=int, default=2, help="number of faults tested in parallel (default: 2)")
    parser.add_argument("--list", action="store_true", help="only print the sample")
    options = parser.parse_args()

    portable, windows_rooms = source_files()
    names = windows_rooms if options.windows else portable
    if options.file:
        names = [name for name in names if any(part in name for part in options.file)]
    if not names:
        raise SystemExit("mutate.py: no such file among " + ("the Windows code" if options.windows else "the portable code"))
    mutants = [mutant for name in names for mutant in mutants_of(ROOT / name)]
    seed = options.seed if options.seed is not None else random.randrange(1_000_000)
    random.Random(seed).shuffle(mutants)
    wanted = options.count or len(mutants)
    print(f"{len(mutants)} faults in {len(names)} files; seed {seed}", flush=True)
    if options.list:
        print("\n".join(str(mutant) for mutant in mutants[:wanted]))
        return 0

    working_copies = queue.Queue()
    for number in range(options.jobs):
        working_copy = WorkingCopy(number)
        working_copy.refresh()
        working_copies.put(working_copy)
    reasons = known_reasons()
    caught = survived = known = 0
    ahead = iter(mutants)

    def work(mutant):
        working_copy = working_copies.get()
        try:
            return mutant, judge(working_copy, mutant, options.windows)
        finally:
            working_copies.put(working_copy)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        running = set()
        while caught + survived + known < wanted:
            while len(running) < min(options.jobs, wanted - caught - survived - known):
                mutant = next(ahead, None)
                if mutant is None:
                    break
                running.add(pool.submit(work, mutant))
            if not running:
                break
            done, running = concurrent.futures.wait(running, return_when=concurrent.futures.FIRST_COMPLETED)
            for result in done:
                mutant, verdict = result.result()
                if verdict == "caught":
                    caught += 1
                elif verdict == "survived" and mutant.key() in reasons:
                    known += 1
                    print(f"cannot be caught: {mutant}: {reasons[mutant.key()]}", flush=True)
                elif verdict == "survived":
                    survived += 1
                    print(f"SURVIVED {mutant}", flush=True)
                if verdict and (caught + survived + known) % 50 == 0:
                    print(f"... {caught + survived + known} of {wanted}", flush=True)
        for result in running:
            result.result()
    total = caught + survived
    share = 100 * caught / total if total else 100
    print(f"{caught} of {total} faults caught, {share:.1f} %; {known} that cannot be caught")
    return 0


if __name__ == "__main__":
    sys.exit(main())
