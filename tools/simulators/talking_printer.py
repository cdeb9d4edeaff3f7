#!/usr/bin/env python3
"""A printer that talks of finished tasks: talking_printer.py --port N TEXT...

Tells every host that connects the texts, percent-encoded as they are, each in a V2 reply of its own; takes what the
host sends and does nothing about it. Announces itself as the virtual printer does.
"""

import contextlib
import socketserver
import sys

STATUS = bytes([0, 1, 0, 0])


def v2_reply(text: str) -> bytes:
    payload = b'getval "task_over"\r\n' + STATUS + text.encode()
    fixed_part = bytes(3) + len(payload).to_bytes(2, "little") + bytes(7)
    return b"\x1b\x1c& V2" + fixed_part + payload


class Host(socketserver.BaseRequestHandler):
    def handle(self) -> None:
        self.request.sendall(b"".join(v2_reply(text) for text in sys.argv[3:]))
        with contextlib.suppress(ConnectionResetError):
            while self.request.recv(65536):
                pass


class Printer(socketserver.ThreadingTCPServer):
    allow_reuse_address = True
    daemon_threads = True


with Printer(("127.0.0.1", int(sys.argv[2])), Host) as printer:
    print(f"virtual printer ready on 127.0.0.1:{printer.server_address[1]}", flush=True)
    printer.serve_forever()
