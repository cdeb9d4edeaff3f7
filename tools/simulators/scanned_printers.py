#!/usr/bin/env python3
"""Network printers for the scan's benchmark: they answer scans, and tell their addresses on TCP port 9100.

A native program, so that what is measured is the host's side alone. A scan of 127.11.N.1 is answered by N printers,
each with an address of its own; answers are a millisecond apart, for the library's socket has a small buffer. Says
"ready" and runs until it is ended.
"""
import asyncio
import socket

SCAN_PORT = 3289
TCP_PORT = 9100
COUNTS = [1, 10, 50]  # As in scan_benchmark.cpp.
QUESTION_LENGTH = 4
REPLY = bytes(16)


def answer(network, printer):
    lines = [f"{network}.{printer + 1}", "ready", "KM451", f"1.0.{printer}"]
    return "\r\n".join(lines + [f"field {line}" for line in range(4, 16)]).encode() + b"\0"


class Scans(asyncio.DatagramProtocol):
    def __init__(self, count):
        self.count = count

    def connection_made(self, transport):
        self.transport = transport

    def datagram_received(self, data, address):
        self.answering = asyncio.ensure_future(self.answer(address))

    async def answer(self, address):
        for printer in range(self.count):
            self.transport.sendto(answer(f"127.11.{self.count}", printer), address)
            await asyncio.sleep(0.001)


async def serve(reader, writer):
    try:
        await reader.readexactly(QUESTION_LENGTH)
        writer.write(REPLY)
        await reader.read()  # Until the host has closed the connection.
    except (asyncio.IncompleteReadError, ConnectionError):
        pass
    writer.close()


async def main():
    loop = asyncio.get_running_loop()
    for count in COUNTS:
        scans = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        scans.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        scans.bind((f"127.11.{count}.1", SCAN_PORT))
        await loop.create_datagram_endpoint(lambda count=count: Scans(count), sock=scans)
    server = await asyncio.start_server(serve, "0.0.0.0", TCP_PORT, backlog=64)
    print("ready", flush=True)
    await server.serve_forever()


asyncio.run(main())
