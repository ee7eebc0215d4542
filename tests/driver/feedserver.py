"""A feed server on 127.0.0.1 that behaves as badly as it is told to, and the feeds it sends."""

import gzip
import random
import select
import socket
import struct
import subprocess
import threading
import time
from html import escape

from .reader import program

# The path of each site's feed, by the site's key.
PATHS = dict(line.split() for line in subprocess.check_output(
    [program().removesuffix("vantro") + "feedserver", "--sites"], text=True).splitlines())

STALL = 8.0  # seconds
DROPS, DROP_SIZE, DROP_EVERY = 200, 40, 0.02  # seconds


class FeedServer:
    """Answers from its making to the end of the process, each request in a thread of its own.

    `behave(path)` is called for each request, in that thread, and returns a manner and the body it is applied to.
    """

    def __init__(self, behave):
        self._behave = behave
        self._listener = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.address = "http://127.0.0.1:%d" % self._listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            connection, _ = self._listener.accept()
            threading.Thread(target=self._answer, args=(connection,), daemon=True).start()

    def _answer(self, connection):
        with connection:
            try:
                request = b""
                while b"\r\n\r\n" not in request:
                    received = connection.recv(4096)
                    if not received:
                        return
                    request += received
                path = request.split(b" ", 2)[1].decode("latin-1")
                manner, body = self._behave(path)
                manner(connection, path, body)
            except OSError:
                pass  # the reader has left


def _head(length, status="200 OK", *lines):
    return "\r\n".join(("HTTP/1.1 " + status, "Content-Type: text/xml", f"Content-Length: {length}",
                        "Connection: close", *lines, "", "")).encode()


# Manners. Each answers one request; the connection is closed when it returns.

def whole(connection, path, body):
    connection.sendall(_head(len(body)) + body)


def slow(connection, path, body):
    time.sleep(0.7)
    whole(connection, path, body)


def gzipped(connection, path, body):
    packed = gzip.compress(body, 1)
    connection.sendall(_head(len(packed), "200 OK", "Content-Encoding: gzip") + packed)


def packed_wrong(connection, path, body):
    connection.sendall(_head(len(body), "200 OK", "Content-Encoding: gzip") + body)


def chunked(connection, path, body):
    connection.sendall(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")
    for at in range(0, len(body), 997):
        piece = body[at:at + 997]
        connection.sendall(b"%x\r\n%s\r\n" % (len(piece), piece))
    connection.sendall(b"0\r\n\r\n")


def not_found(connection, path, body):
    connection.sendall(_head(9, "404 Not Found") + b"Not here.")


def moved(connection, path, body):
    connection.sendall(_head(0, "301 Moved Permanently", "Location: " + path.split("?")[0] + "?moved"))


def moved_in_circles(connection, path, body):
    connection.sendall(_head(0, "302 Found", "Location: " + path))


def moved_to_a_file(connection, path, body):
    connection.sendall(_head(0, "302 Found", "Location: file:///etc/hostname"))


def empty(connection, path, body):
    connection.sendall(_head(0))


def silent(connection, path, body):
    pass


def stall(connection, path, body):
    half = len(body) // 2
    connection.sendall(_head(len(body)) + body[:half])
    if not select.select([connection], [], [], STALL)[0]:  # there is something to read when the reader has left
        connection.sendall(body[half:])


def drip(connection, path, body):
    connection.sendall(_head(len(body)))
    dripped = DROPS * DROP_SIZE
    for at in range(0, dripped, DROP_SIZE):
        connection.sendall(body[at:at + DROP_SIZE])
        time.sleep(DROP_EVERY)
    connection.sendall(body[dripped:])


def reset(connection, path, body):
    connection.sendall(_head(len(body)) + body[:len(body) // 3])
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))


def garbage(connection, path, body):
    connection.sendall(random.Random(path).randbytes(5000))


def garbage_as_feed(connection, path, body):
    whole(connection, path, random.Random(path).randbytes(50000))


def huge(connection, path, body):
    block = bytes(1 << 20)
    connection.sendall(_head(200 << 20))
    for _ in range(200):
        connection.sendall(block)


def huge_head(connection, path, body):
    connection.sendall(b"HTTP/1.1 200 OK\r\n" + b"X-Filler: %s\r\n" % (b"x" * 8000) * 100 + b"\r\n")


def length_too_large(connection, path, body):
    connection.sendall(_head(len(body) + 1000) + body)


def length_too_small(connection, path, body):
    connection.sendall(_head(len(body) // 2) + body)


def length_absurd(connection, path, body):
    connection.sendall(_head(-5) + body)


MISBEHAVIOURS = (slow, gzipped, packed_wrong, chunked, not_found, moved, moved_in_circles, moved_to_a_file, empty,
                 silent, stall, drip, reset, garbage, garbage_as_feed, huge, huge_head, length_too_large,
                 length_too_small, length_absurd)


def document(titles, address, text=""):
    """A feed with an item for each title that has every element any site takes, and after its picture the text."""
    items = "".join(
        f"<item><title>{escape(title)}</title><link>{address}/page/{number}</link><homepage>{address}/home</homepage>"
        f"<date>5 July 2003</date><releasedate>2003-07-05</releasedate>"
        f"<description>Text of <b>{escape(title)}</b><br><img src=\"{address}/picture/{number}\">{text}</description></item>\n"
        for number, title in enumerate(titles))
    text = f'<?xml version="1.0" encoding="utf-8"?>\n<rss><channel><title>News</title>\n{items}</channel></rss>\n'
    return text.encode("utf-8", "surrogatepass")
