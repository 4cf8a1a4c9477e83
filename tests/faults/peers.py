# SPDX-License-Identifier: MIT

"""The other ends of connections: raw ones, and servers and proxies that other projects wrote."""

import base64
import contextlib
import hashlib
import shutil
import socket
import ssl
import unittest

from desktop import wait_for

MAGIC = "258EAFA5-E914-47DA-95CA-C5AB0DC85B11"
REQUEST_TIMEOUT = 10


def free_port():
    """A port on loopback that nobody listens on."""
    with socket.create_server(("127.0.0.1", 0)) as probe:
        return probe.getsockname()[1]


def program(name):
    """The path of a program, also of one for administrators. Skips the test without it."""
    path = shutil.which(name, path="/usr/bin:/bin:/usr/sbin:/sbin")
    if path is None:
        raise unittest.SkipTest(f"{name} is not installed, see packaging/linux/packages-faults.txt")
    return path


def start_server(desktop, arguments, port):
    """Starts a server on the desktop and waits until it listens. Skips the test without the server."""
    process = desktop.spawn([program(arguments[0]), *map(str, arguments[1:])])

    def listens():
        with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port), 1):
            return True
        return False
    wait_for(listens, arguments[0], process=process)
    return process


def raw(*chunks):
    """An answer of a board: sends bytes at once and closes."""
    def answer(near):
        for chunk in chunks:
            near.sendall(chunk)
        near.shutdown(socket.SHUT_WR)
        near.settimeout(REQUEST_TIMEOUT)
        while near.recv(65536):
            pass
    return answer


def over_tls(certificate, respond):
    """An answer of a board: makes a TLS connection, reads the request, and calls `respond` with the
    connection and the request."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    key, chain = certificate
    context.load_cert_chain(chain, key)

    def answer(near):
        near.settimeout(REQUEST_TIMEOUT)
        # The application refuses connections on purpose.
        with contextlib.suppress(ssl.SSLError):
            with context.wrap_socket(near, server_side=True) as connection:
                request = b""
                while b"\r\n\r\n" not in request:
                    data = connection.recv(65536)
                    if not data:
                        return
                    request += data
                respond(connection, request)
    return answer


def accept_key(request):
    """The value of Sec-WebSocket-Accept for a request."""
    key = next(line.split(b":", 1)[1].strip() for line in request.split(b"\r\n")
               if line.lower().startswith(b"sec-websocket-key:"))
    return base64.b64encode(hashlib.sha1(key + MAGIC.encode()).digest())


def sends(response):
    """A response of over_tls(): sends bytes, of which %ACCEPT% is replaced, and closes."""
    def respond(connection, request):
        connection.sendall(response.replace(b"%ACCEPT%", accept_key(request)))
        with contextlib.suppress(OSError):
            connection.unwrap()
    return respond
