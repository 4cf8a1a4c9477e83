# SPDX-License-Identifier: MIT

"""A speech service that sends what a test tells it to, over real TLS."""

import asyncio
import http
import json
import socket
import ssl
import struct
import subprocess
import threading
import time
import urllib.parse

# Debian 12 has this interface alone, and the versions after it keep it.
from websockets.exceptions import ConnectionClosedError
from websockets.legacy.server import serve

from desktop import wait_for


def make_certificate(folder, name="localhost", address="127.0.0.1"):
    """Makes a key and a self-signed certificate for `name` and `address`; returns their files."""
    folder.mkdir(exist_ok=True)
    key, certificate = folder / f"{name}.key", folder / f"{name}.pem"
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
         "-nodes", "-days", "2", "-subj", f"/CN={name}", "-addext", f"subjectAltName=DNS:{name},IP:{address}",
         "-keyout", str(key), "-out", str(certificate)],
        check=True, capture_output=True,
    )
    return key, certificate


def transcript(text, final=True):
    """The message that carries a transcript."""
    return json.dumps({
        "type": "Results", "channel_index": [0, 1], "duration": 1.0, "start": 0.0,
        "is_final": final, "speech_final": final,
        "channel": {"alternatives": [{"transcript": text, "confidence": 0.99, "words": []}]},
    }, ensure_ascii=False)


class Stream:
    """One connection of the application."""

    def __init__(self, service, connection):
        self._service = service
        self._connection = connection
        self.query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(connection.path).query))
        self.protocols = connection.request_headers.get("Sec-WebSocket-Protocol")
        self.audio = bytearray()
        self.texts = []
        # Monotonic times in seconds: of the request that opens the socket, and of the first audio.
        self.request_time = service.request_time
        self.first_audio_time = None
        # Whether the TLS handshake resumed an earlier session.
        self.is_resumed = connection.transport.get_extra_info("ssl_object").session_reused
        self.is_closed = False

    def say(self, text, final=True):
        """Sends a transcript once the application has sent audio. A real service sends none earlier,
        and the application does not record yet when its connection has only just opened."""
        wait_for(lambda: self.audio, "sound from the application")
        self.send(transcript(text, final))

    def send(self, message):
        """Sends a text or binary message unchanged."""
        self._service.call(self._connection.send(message))

    def send_all(self, messages):
        """Sends messages as fast as the application reads them, without waiting for its answers."""
        async def send():
            for message in messages:
                await self._connection.send(message)
        self._service.call(send())

    def wait_until_read(self):
        """Waits until the application has read everything sent so far."""
        async def answered():
            await (await self._connection.ping())
        self._service.call(answered())

    def send_bytes(self, data):
        """Writes bytes to the connection without a web-socket frame."""
        self._service.post(lambda: self._connection.transport.write(data))

    def close(self, code=1000, reason=""):
        self._service.call(self._connection.close(code, reason))

    def reset(self):
        """Resets the connection, without a close frame."""
        def reset():
            transport = self._connection.transport
            transport.get_extra_info("socket").setsockopt(
                socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            transport.abort()
        self._service.post(reset)

    @property
    def is_audio_ended(self):
        """Whether the application has announced the end of its audio."""
        return '{"type":"CloseStream"}' in self.texts

    async def serve(self):
        try:
            async for message in self._connection:
                if isinstance(message, bytes):
                    if self.first_audio_time is None:
                        self.first_audio_time = time.monotonic()
                    self.audio += message
                else:
                    self.texts.append(message)
                    if self.is_audio_ended and self._service.closes_at_end:
                        await self._connection.close()
        except ConnectionClosedError:
            pass  # A test breaks connections on purpose and checks is_closed.
        finally:
            self.is_closed = True


class ScriptedService:
    """Serves until it is closed, on loopback or on the bound socket `listener`, and with `tls_version`
    in this version of TLS alone. With `refusal`, a status and a body, it refuses all connections."""

    def __init__(self, key, certificate, listener=None, tls_version=None):
        self.streams = []
        self.refusal = None
        # Seconds from the request that opens a socket to the answer.
        self.answer_delay = 0
        # When the last request arrived, in monotonic seconds.
        self.request_time = None
        self.closes_at_end = True
        self._context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self._context.load_cert_chain(certificate, key)
        if tls_version is not None:
            self._context.minimum_version = self._context.maximum_version = tls_version
        self._loop = asyncio.new_event_loop()
        self._thread = threading.Thread(target=self._loop.run_forever, daemon=True)
        self._thread.start()
        self._server = self.call(self._listen(listener))
        self.port = self._server.sockets[0].getsockname()[1]

    @property
    def host(self):
        return f"localhost:{self.port}"

    def stream(self, number=1, timeout=10.0):
        """Waits for the connection with this number, counted from 1; returns the connection."""
        wait_for(lambda: len(self.streams) >= number, f"connection {number}", timeout)
        return self.streams[number - 1]

    def call(self, coroutine):
        return asyncio.run_coroutine_threadsafe(coroutine, self._loop).result(30)

    def post(self, function):
        self._loop.call_soon_threadsafe(function)

    def close(self):
        self.call(self._close())
        self._loop.call_soon_threadsafe(self._loop.stop)
        self._thread.join()
        self._loop.close()

    async def _listen(self, listener):
        place = ({"sock": listener} if listener
                 else {"host": "localhost", "port": 0, "family": socket.AF_INET})
        return await serve(
            self._serve, **place, ssl=self._context, subprotocols=["token"],
            process_request=self._answer_request, max_size=None, close_timeout=1,
        )

    async def _close(self):
        self._server.close()
        await self._server.wait_closed()

    async def _answer_request(self, _path, _headers):
        self.request_time = time.monotonic()
        await asyncio.sleep(self.answer_delay)
        if self.refusal is None:
            return None
        status, body = self.refusal
        return http.HTTPStatus(status), {"Content-Type": "application/json"}, body.encode()

    async def _serve(self, connection):
        stream = Stream(self, connection)
        self.streams.append(stream)
        await stream.serve()
