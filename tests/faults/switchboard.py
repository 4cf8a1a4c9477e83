# SPDX-License-Identifier: MIT

"""A port that connects the application with whatever peer a test chooses, and that can fail."""

import contextlib
import select
import socket
import struct
import threading

# Little, so that sound soon waits in the application when nobody reads here.
RECEIVE_BUFFER = 4096
CHUNK = 65536


class Line:
    """One connection of the application and the one to the peer behind it."""

    def __init__(self, near, far):
        self.near, self.far = near, far
        self.is_upward_open = threading.Event()
        self.is_upward_open.set()
        self.is_downward_open = threading.Event()
        self.is_downward_open.set()
        self._threads = [
            threading.Thread(target=self._carry, args=direction, daemon=True)
            for direction in ((near, far, self.is_upward_open), (far, near, self.is_downward_open))]
        for thread in self._threads:
            thread.start()

    def _carry(self, source, sink, gate):
        # The other direction, or a test, closes the sockets; a closed one has no number.
        with contextlib.suppress(OSError, ValueError):
            while True:
                gate.wait()
                ready, _, _ = select.select([source], [], [], 0.2)
                if not ready or not gate.is_set():
                    continue
                data = source.recv(CHUNK)
                if not data:
                    sink.shutdown(socket.SHUT_WR)
                    return
                sink.sendall(data)

    def wait_until_closed(self):
        """Waits until both directions have ended."""
        for thread in self._threads:
            thread.join()

    def reset(self):
        """Ends both connections with a TCP reset."""
        for end in (self.near, self.far):
            with contextlib.suppress(OSError):
                end.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            # The reset leaves when select() in _carry() lets go of the socket, 0.2 s later at most.
            with contextlib.suppress(OSError):
                end.close()

    def close(self):
        """Ends the connection to the application as an ended process does, without TLS's own close."""
        with contextlib.suppress(OSError):
            self.near.shutdown(socket.SHUT_RDWR)
        with contextlib.suppress(OSError):
            self.far.close()

    def half_close(self):
        """Ends the direction to the application only."""
        self.near.shutdown(socket.SHUT_WR)


class Switchboard:
    """Listens on loopback until it is closed. `peer` is the port of the peer on loopback."""

    def __init__(self, family=socket.AF_INET):
        self._family = family
        self.peer = None
        self.lines = []
        # Called with a new connection instead of connecting it with a peer.
        self.answer = None
        self.port = 0
        self.listen()

    def listen(self):
        """Accepts connections, again after refuse()."""
        self._listener = socket.create_server(
            ("localhost" if self._family == socket.AF_INET else "::1", self.port), family=self._family,
            backlog=16)
        self._listener.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, RECEIVE_BUFFER)
        self.port = self._listener.getsockname()[1]
        threading.Thread(target=self._accept, args=(self._listener,), daemon=True).start()

    def refuse(self):
        """Refuses connections until listen()."""
        # shutdown() wakes the thread that accepts; close() alone would leave the port open.
        with contextlib.suppress(OSError):
            self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()

    def restore(self, peer):
        """Connects with `peer` again, whatever was wrong."""
        self.peer, self.answer = peer, None
        for line in self.lines:
            line.is_upward_open.set()
            line.is_downward_open.set()
        self.lines = []
        if self._listener.fileno() < 0:
            self.listen()

    @property
    def line(self):
        """The latest connection."""
        return self.lines[-1]

    def _accept(self, listener):
        with contextlib.suppress(OSError):
            while True:
                near, _ = listener.accept()
                if self.answer is not None:
                    threading.Thread(target=self._answer, args=(near,), daemon=True).start()
                    continue
                try:
                    far = socket.create_connection(("127.0.0.1", self.peer))
                except OSError:
                    near.close()
                    continue
                for end in (near, far):
                    end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                self.lines.append(Line(near, far))

    def _answer(self, near):
        # The application ends connections on purpose.
        with contextlib.suppress(OSError):
            self.answer(near)
        with contextlib.suppress(OSError):
            near.close()

    def close(self):
        self.refuse()
