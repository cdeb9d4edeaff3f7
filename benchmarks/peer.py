#!/usr/bin/env python3
"""The other end of the measured connections: a printer that does nothing but keep up.

A native program, so that what is measured is the host's side alone. Prints its three ports: of the first it takes
TRANSFER_SIZE bytes and answers with one, on the second it gives TRANSFER_SIZE bytes for each that comes, on the third
it answers each command with one byte. Runs until it is ended.
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
