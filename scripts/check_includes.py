#!/usr/bin/env python3
"""Checks which way the includes go: scripts/check_includes.py

Prints each include that goes against the direction in docs/architecture.md, and each system header outside of the rooms
that may know the system. Fails if there is one.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# What each room of src/ may include beside itself and the public headers.
ROOMS = {
    "api": {"monitor", "download", "discovery", "protocol", "port", "platform"},
    "monitor": {"protocol", "port", "platform"},
    "download": {"protocol", "port", "platform"},
    "discovery": {"protocol", "port", "platform"},
    "protocol": {"port", "platform"},
    "port": {"platform"},
    "platform": set(),
}

# Programs and headers that know the library as a host does. vexoctl shares the words for the codes, the user's language
# and the reader of configuration files.
HOSTS = {
    "include": set(),
    "examples": set(),
    "tools/virtual_printer": {"virtual_printer/"},
    "tools/simulators": {"simulators/"},
    "tools/vexoctl": {
        "vexoctl/",
        "platform/language.h",
        "protocol/error_text.h",
        "protocol/sdk_config_data.h",
        "protocol/sdk_config_tables.h",
        "protocol/sdk_config_text.h",
    },
}

# What each room of the virtual printer may include beside itself. The pure ones know no sockets.
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

SYSTEM_HEADER = re.compile(
    r"windows|winsock2|ws2|win|iphlp|mswsock|mstcpip|setupapi|devpkey|devguid|initguid|cfgmgr|dbt|usb|io\.h|direct\.h|"
    r"fcntl|process\.h|unistd|pthread|sys/|netinet|arpa|net/|poll|termios|pty|dlfcn|signal\.h"
)

# The portable code that must build for the host; drivers and everything under platform/ are the doors to the system.
SYSTEM_ROOMS = [
    r"src/platform/(windows|posix)/",
    r"src/platform/mutex\.h",  # POSIX threads, which both builds have.
    r"src/port/(bluetooth_port|device_interfaces|file_port|overlapped_transfer|parallel_port|serial_port|socket_port"
    r"|tcp_port|usb_enumeration|usb_port|windows_drivers)\.",
    r"src/discovery/(network_scan|usb_hotplug|usb_monitor_window)\.",
    r"tools/(vexoctl|simulators)/",
    r"tools/virtual_printer/\w+/(windows|linux)/",
    r"examples/download\.c",  # Ctrl-C, by the C library.
]


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = re.match(r'\s*#\s*include\s+([<"])([^>"]+)[>"]', line)
        if match:
            yield number, match.group(1) == '"', match.group(2)


def printer_fault(name, own, header):
    """The same for a file of the virtual printer."""
    room = name[len(PRINTER):].split("/")[0]
    if not own:
        return "not for pure rooms" if header.startswith("asio") and room in PURE_PRINTER_ROOMS else None
    parts = header.split("/")
    if parts[0] != "virtual_printer" or len(parts) < 3:
        return None
    return None if parts[1] == room or parts[1] in PRINTER_ROOMS.get(room, set()) else "against the direction"


def fault(name, own, header):
    """Why the file may not include the header; None if it may."""
    if name.startswith(PRINTER) and (reason := printer_fault(name, own, header)):
        return reason
    if not own:
        is_system = SYSTEM_HEADER.match(header)
        if is_system and not any(re.match(room, name) for room in SYSTEM_ROOMS):
            return "a system header"
        return None
    if header.startswith("vexo/"):
        return None
    for folder, allowed in HOSTS.items():
        if name.startswith(folder + "/"):
            return None if any(header.startswith(prefix) for prefix in allowed) else "not for hosts"
    room, target = name.split("/")[1], header.split("/")[0]
    if target == "platform" and header.startswith("platform/windows/"):
        windows = any(re.match(door, name) for door in SYSTEM_ROOMS)
        return None if windows else "the Windows side of platform/"
    return None if target == room or target in ROOMS[room] else "against the direction"


def main():
    faults = 0
    for folder in ["include", "src", "tools", "examples"]:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix not in {".h", ".hpp", ".c", ".cpp"}:
                continue
            name = path.relative_to(ROOT).as_posix()
            for number, own, header in includes(path):
                reason = fault(name, own, header)
                if reason:
                    print(f"{name}:{number}: {header}: {reason}")
                    faults += 1
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
