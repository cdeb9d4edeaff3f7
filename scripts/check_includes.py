#!/usr/bin/env python3
"""Checks the direction of includes: scripts/check_includes.py

Prints includes that violate the direction in docs/architecture.md, system headers outside a folder named for their system,
and include cycles. Fails if there are any.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# The folders of src/: each may include itself, the folders listed with it, and the public headers.
ROOMS = {
    "api": {"monitor", "download", "discovery", "session", "protocol", "config", "messages", "port", "platform"},
    "monitor": {"session", "protocol", "config", "messages", "port", "platform"},
    "download": {"session", "protocol", "config", "messages", "port", "platform"},
    "discovery": {"session", "protocol", "config", "messages", "port", "platform"},
    "session": {"protocol", "config", "messages", "port", "platform"},
    "protocol": {"port", "platform"},
    "config": {"platform"},
    "messages": {"platform"},
    "port": {"platform"},
    "platform": set(),
}

# Programs and headers that use the library as hosts do, with the folders they may include. vexoctl shares the error texts
# and the configuration parser with the library.
HOSTS = {
    "include": set(),
    "examples": set(),
    "tools/virtual_printer": {"virtual_printer/"},
    "tools/simulators": {"simulators/"},
    "tools/vexoctl": {"vexoctl/", "config/", "messages/", "platform/language.h"},
}

# What each folder of the virtual printer may include besides itself. The pure ones may not use sockets.
PRINTER = "tools/virtual_printer/"
PRINTER_ROOMS = {
    "app": {"discovery", "transport", "model", "downloads", "wire"},
    "discovery": {"transport", "model", "wire"},
    "transport": {"downloads", "wire"},
    "model": {"downloads", "wire"},
    "downloads": {"wire"},
    "wire": set(),
}
PURE_PRINTER_ROOMS = {"model", "downloads", "wire"}

SYSTEMS = {
    "windows": re.compile(
        r"windows\.h|winsock|ws2|win|iphlp|mswsock|mstcpip|setupapi|devpkey|devguid|initguid|cfgmgr|dbt|usb|io\.h|direct\.h"
        r"|process\.h|shlobj|psapi"
    ),
    "linux": re.compile(
        r"unistd|pthread|sys/|netinet|arpa|net/|netdb|poll|termios|pty|dlfcn|linux/|bluetooth|libudev|fcntl|glob\.h"
    ),
}


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = re.match(r'\s*#\s*include\s+([<"])([^>"]+)[>"]', line)
        if match:
            yield number, match.group(1) == '"', match.group(2)


def foreign_system(name, header):
    """The system that the header belongs to, unless the file is in a folder named for it."""
    for system, headers in SYSTEMS.items():
        if headers.match(header) and system not in name.split("/")[:-1]:
            return system
    return None


def is_platform_header(name, header, system):
    """Whether this is platform/NAME.h including platform/SYSTEM/NAME.h, which is allowed."""
    return name == "src/" + header.replace(f"/{system}/", "/") and header.startswith("platform/")


def printer_fault(name, own, header):
    """Like fault(), for files of the virtual printer."""
    room = name[len(PRINTER):].split("/")[0]
    if not own:
        return "not allowed in pure folders" if header.startswith("asio") and room in PURE_PRINTER_ROOMS else None
    parts = header.split("/")
    if parts[0] != "virtual_printer" or len(parts) < 3:
        return None
    return None if parts[1] == room or parts[1] in PRINTER_ROOMS.get(room, set()) else "against the direction"


def fault(name, own, header):
    """The reason why the file may not include the header, or None."""
    if name.startswith(PRINTER) and printer_fault(name, own, header):
        return printer_fault(name, own, header)
    if not own:
        ruled = name.startswith(("src/", "include/", PRINTER))
        return "a system header" if ruled and foreign_system(name, header) else None
    if header.startswith("vexo/"):
        return None
    for folder, allowed in HOSTS.items():
        if name.startswith(folder + "/"):
            return None if any(header.startswith(prefix) for prefix in allowed) else "not allowed for hosts"
    for system in SYSTEMS:
        if f"/{system}/" in header and system not in name.split("/")[:-1] and not is_platform_header(name, header, system):
            return "header of one system"
    room, target = name.split("/")[1], header.split("/")[0]
    return None if target == room or target in ROOMS[room] else "against the direction"


def cycles(files):
    """Include cycles, each as a list of file names."""
    done, path = set(), []

    def visit(name):
        if name in path:
            yield path[path.index(name):] + [name]
        elif name not in done:
            path.append(name)
            for target in files.get(name, ()):
                yield from visit(target)
            path.pop()
            done.add(name)

    for name in files:
        yield from visit(name)


def cycles_of_pairs(files):
    """Like cycles(), with a header and its source file as one node."""
    def pair(name):
        return name[: -len(".cpp")] + ".h" if name.endswith(".cpp") else name

    pairs = {}
    for name, targets in files.items():
        pairs.setdefault(pair(name), set()).update(pair(target) for target in targets)
    for name, targets in pairs.items():
        targets.discard(name)
    return cycles({name: sorted(targets) for name, targets in pairs.items()})


def main():
    faults, graph = [], {}
    for folder in ["include", "src", "tools", "examples"]:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix not in {".h", ".hpp", ".c", ".cpp"}:
                continue
            name = path.relative_to(ROOT).as_posix()
            graph[name] = []
            for number, own, header in includes(path):
                reason = fault(name, own, header)
                if reason:
                    faults.append(f"{name}:{number}: {header}: {reason}")
                if own:
                    homes = [f"{home}/{header}" for home in ("src", "tools", "include", str(path.parent.relative_to(ROOT)))]
                    graph[name] += [home for home in homes if (ROOT / home).exists()]
    faults += ["include cycle: " + " -> ".join(cycle) for cycle in cycles_of_pairs(graph)]
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
