# SPDX-License-Identifier: MIT

"""Bytes from the service after the web socket has opened."""

import struct

from cell import Cell
from fault_test import FaultTest, add_cells
from faults import is_read, steps, waits
from scripted_service import transcript

LOST = "Deepgram error: The connection to the service was lost"
UNSENT = "Deepgram error: A message could not be sent: "
CLOSED = "Deepgram error: The service closed the connection ("
# A message may have this many bytes.
LIMIT = 1 << 20
TOO_LONG = "bytes that is longer than 1048576"
TEXT, BINARY, CONTINUATION, CLOSE, PING, PONG = 1, 2, 0, 8, 9, 10


def frame(opcode, payload=b"", fin=True, reserved=0, size=None):
    """A frame of a server. `size` is the number of bytes that hold the length: 1, 3 or 9."""
    length = len(payload)
    if size is None:
        size = 1 if length < 126 else 3 if length < 65536 else 9
    head = bytes([fin << 7 | reserved << 4 | opcode])
    head += {1: bytes([length & 0x7F]), 3: b"\x7e" + struct.pack("!H", length & 0xFFFF),
             9: b"\x7f" + struct.pack("!Q", length)}[size]
    return head + payload


def final(text):
    return frame(TEXT, transcript(text).encode())


def sends(data):
    def fault(world):
        world.stream.send_bytes(data)
    return fault


def sends_slowly(data, size):
    """A fault: the bytes come in pieces, each in a packet of its own."""
    def fault(world):
        for start in range(0, len(data), size):
            world.stream.send_bytes(data[start:start + size])
            world.wait(0.002)
    return fault


def breaks(name, data, **options):
    """A cell: the bytes break the protocol, the connection is lost, and what came before stays."""
    return Cell(name, sends(data), (LOST, UNSENT), **options)


def harmless(name, data, text="One two", log=(), **options):
    """A cell: the bytes do no harm, and a final piece after them arrives."""
    def fault(world):
        world.stream.send_bytes(data)
        world.stream.send_bytes(final("two"))
        world.target.wait_for_text(text)
    return Cell(name, fault, log, text, **options)


def closes(name, payload, log, **options):
    """A cell: a close frame with this payload comes. Sound after it is not sent, which is no error."""
    return Cell(name, sends(frame(CLOSE, payload)), log, **options)


def code(number, reason=b""):
    return struct.pack("!H", number) + reason


def padded(size):
    """A final piece, "two", in a message of `size` bytes."""
    message = transcript("two").encode()
    return message[:-1] + b', "padding": "' + b"x" * (size - len(message) - 15) + b'"}'


CELLS = [
    *(breaks(f"reserved bit {bit}", frame(TEXT, b"{}", reserved=1 << (3 - bit)), is_fast=bit == 1)
      for bit in (1, 2, 3)),
    *(breaks(f"reserved opcode {opcode}", frame(opcode, b"x"), is_fast=opcode == 3)
      for opcode in (3, 4, 5, 6, 7, 11, 12, 13, 14, 15)),
    breaks("a masked frame", b"\x81\x82abcd{}", is_fast=True),
    breaks("a ping in fragments", frame(PING, b"x", fin=False)),
    breaks("a ping of 126 bytes", frame(PING, b"x" * 126)),
    breaks("a continuation of nothing", frame(CONTINUATION, b"x")),
    breaks("a message inside a message", frame(TEXT, b"{", fin=False) + frame(TEXT, b"}"), is_fast=True),
    breaks("a length of 3 bytes where 1 is enough", frame(TEXT, b"{}", size=3)),
    breaks("a length of 9 bytes where 3 are enough", frame(TEXT, b"x" * 200, size=9)),
    breaks("a length beyond 63 bits", b"\x82\x7f" + b"\xff" * 8 + b"x"),
    breaks("noise", bytes(range(255, 0, -1)) * 4, is_fast=True),
    breaks("a close frame of 1 byte", frame(CLOSE, b"x")),
    *(breaks(f"the forbidden close code {number}", frame(CLOSE, code(number)))
      for number in (0, 999, 1004, 1005, 1006, 1016, 2999)),
    breaks("a close reason that is not UTF-8", frame(CLOSE, code(1000, b"\xff\xfe"))),
    closes("an orderly close", code(1000), (CLOSED + "1000)",), is_fast=True),
    closes("going away", code(1001), (CLOSED + "1001)",)),
    closes("an internal error", code(1011, b"out of memory"), (CLOSED + "1011: out of memory)",),
           is_fast=True),
    closes("a close for the service's own reason", code(4000, b"quota\r\nused"), (CLOSED + "4000: quota",)),
    closes("a close without a code", b"", (CLOSED + "1005)",)),
    closes("a close with a reason of 123 bytes", code(1000, b"r" * 123), (CLOSED + "1000: rrr",)),
    Cell("a final piece and the close in one packet", sends(final("two") + frame(CLOSE, code(1000))),
         (CLOSED + "1000)",), "One two", is_fast=True),
    Cell("fifty final pieces and the close in one packet",
         sends(b"".join(final(f"w{n}") for n in range(50)) + frame(CLOSE, code(1000))),
         (CLOSED + "1000)",), "One " + " ".join(f"w{n}" for n in range(50))),
    Cell("a final piece and a broken frame in one packet", sends(final("two") + b"\xff" * 64),
         (LOST, UNSENT), "One two", is_fast=True),
    Cell("a final piece and the end of TCP",
         steps(sends(final("two")), is_read, lambda w: w.board.line.close()),
         (LOST, UNSENT), "One two", is_fast=True),
    Cell("half a frame and the end of TCP",
         steps(sends(final("two")[:-5]), waits(0.1), lambda w: w.board.line.close()), (LOST, UNSENT)),
    harmless("a ping", frame(PING, b"x" * 125), is_fast=True),
    harmless("a thousand pings", frame(PING, b"x" * 125) * 1000),
    harmless("a pong that nobody asked for", frame(PONG, b"x")),
    harmless("a message in fragments with pings between",
             frame(TEXT, b"{", fin=False) + frame(PING) + frame(CONTINUATION, b"}"), is_fast=True),
    harmless("a thousand empty fragments",
             frame(TEXT, b"", fin=False) + frame(CONTINUATION, b"", fin=False) * 1000
             + frame(CONTINUATION, b"{}")),
    harmless("an empty message", frame(TEXT)),
    harmless("a binary message that is no JSON", frame(BINARY, b"\x00\xff" * 50)),
    harmless("a text message that is not UTF-8", frame(TEXT, b"\xff\xfe\xfd"),
             log=("dropped a text message of 3 bytes that is not UTF-8",), is_fast=True),
    harmless("a transcript with a byte that is not UTF-8",
             frame(TEXT, transcript("bad").encode().replace(b"bad", b"b\xffd")), log=("not UTF-8",)),
    harmless("a message of a megabyte", frame(BINARY, b"x" * LIMIT)),
    harmless("a message of a megabyte and a byte", frame(BINARY, b"x" * (LIMIT + 1)),
             log=(f"a message of {LIMIT + 1} {TOO_LONG}",), is_fast=True),
    harmless("a message of 32 megabytes in fragments",
             frame(BINARY, b"x" * LIMIT, fin=False)
             + frame(CONTINUATION, b"x" * LIMIT, fin=False) * 30 + frame(CONTINUATION, b"x" * LIMIT),
             log=(f"a message of {32 * LIMIT} {TOO_LONG}",)),
    Cell("a final piece in a message of exactly a megabyte",
         sends(frame(TEXT, padded(LIMIT))), text="One two"),
    Cell("a final piece, one byte in a packet", sends_slowly(final("two"), 1), text="One two"),
    Cell("a final piece, one byte in a fragment", sends(
        frame(TEXT, b"", fin=False)
        + b"".join(frame(CONTINUATION, bytes([b]), fin=False) for b in transcript("two").encode())
        + frame(CONTINUATION)), text="One two", is_fast=True),
    Cell("a final piece in a binary message", sends(frame(BINARY, transcript("two").encode())),
         text="One two"),
    Cell("three hundred final pieces at once",
         sends(b"".join(final(f"w{n}") for n in range(300))),
         text="One " + " ".join(f"w{n}" for n in range(300))),
]


class Frames(FaultTest):
    pass


add_cells(Frames, CELLS)
