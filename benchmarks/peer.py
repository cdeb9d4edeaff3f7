#!/usr/bin/env python3
"""The printer's end of the measured connections.

A native program, so that only the host's side runs under Wine. Prints three port numbers: the first answers each
TRANSFER_SIZE bytes with one byte, the second answers each byte with TRANSFER_SIZE bytes, and the third answers each
command with one byte. Runs until it is killed.
"""
import socket
import threading

TRANSFER_SIZE = 1024 * 1024  # As in transfer_benchmark.cpp.
COMMAND_SIZE = 21
PIECE = bytes(1 << 20)


def take(connection, length):
    while length > 0:
        piece = connection.recv(min(length, len(PIECE)))
        if not piece:
            return False
        length -= len(piece)
    return True


def serve(connection, question, answer):
    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    with connection:
        while take(connection, question):
            for start in range(0, answer, len(PIECE)):
                connection.sendall(PIECE[: answer - start])


def listen(question, answer):
    listener = socket.create_server(("127.0.0.1", 0))

    def accept():
        while True:
            connection, _ = listener.accept()
            threading.Thread(target=serve, args=(connection, question, answer), daemon=True).start()

    threading.Thread(target=accept, daemon=True).start()
    return listener.getsockname()[1]


print(listen(TRANSFER_SIZE, 1), listen(1, TRANSFER_SIZE), listen(COMMAND_SIZE, 1), flush=True)
threading.Event().wait()
