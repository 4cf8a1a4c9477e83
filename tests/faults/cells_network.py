# SPDX-License-Identifier: MIT

"""TCP connections that fail, stall or come back, and services that end a stream in their own way."""

import time

from cell import Cell
from desktop import wait_for
from fault_test import FaultTest, add_cells
from faults import (
    closes_again, expects, is_read, never_closes, says, steps, stops, waits, waits_for)
from peers import raw

LOST = "Deepgram error: The connection to the service was lost"
UNSENT = "Deepgram error: A message could not be sent: "
CANCELLED = "Deepgram error: The connection was cancelled"
INSECURE = "Deepgram error: No secure connection to localhost"
TIMEOUT = "Deepgram WS open timeout (5s) — connect failed"
WAITING = "more than 5 s of sound wait to be sent"
LEFT = "all waiting sound has left"
WAITED_IN_VAIN = "the waiting sound is lost"
# Bytes of sound that the microphone gives in a second.
BYTES_PER_SECOND = 32000
# The least part of the sound that must have arrived. A busy machine feeds the microphone late.
MIN_PART = 0.8


def loses(action):
    """A fault: the connection ends by `action` on its line, and the log says so."""
    def fault(world):
        action(world.board.line)
        world.wait_for_lines(LOST)
    return fault


def stops_reading(world):
    world.stalled_at = time.monotonic()
    world.heard_before = len(world.stream.audio)
    world.board.line.is_upward_open.clear()


def reads_again(world):
    world.board.line.is_upward_open.set()


def all_sound_arrives(world):
    """Checks that the sound of the pause has arrived as well."""
    seconds = time.monotonic() - world.stalled_at
    expected = MIN_PART * seconds * BYTES_PER_SECOND
    wait_for(lambda: len(world.stream.audio) - world.heard_before > expected, "the sound of the pause")


def stops_writing(world):
    world.board.line.is_downward_open.clear()


def writes_again(world):
    world.board.line.is_downward_open.set()


def wait_for_end_of_sound(world):
    wait_for(lambda: world.stream.is_audio_ended, "the end of the sound")


def after_the_stop(name, *faults, log=(), text="One", **options):
    """A cell: the fault comes after the stop, and the service does not close the stream by itself."""
    return Cell(name, steps(stops, wait_for_end_of_sound, *faults), log, text, before=never_closes,
                heal=closes_again, is_red=False, **options)


def refuses(world):
    world.board.refuse()


def answers(*chunks):
    def before(world):
        world.board.answer = raw(*chunks)
    return before


CELLS = [
    Cell("nobody listens", before=refuses, opens=False, log=("Deepgram error: No connection to localhost:",),
         is_fast=True),
    Cell("a host that no name server knows", settings={"deepgramHost": "nowhere.invalid"}, opens=False,
         log=("Deepgram error: The host nowhere.invalid was not found",), is_lasting=True, is_fast=True),
    Cell("a reset", loses(lambda line: line.reset()), (LOST, UNSENT), is_fast=True),
    Cell("an end without a close frame", loses(lambda line: line.close()), (LOST, UNSENT), is_fast=True),
    Cell("an end of one direction", loses(lambda line: line.half_close()), (LOST, UNSENT)),
    Cell("a reset while sound waits", steps(stops_reading, waits(3), loses(lambda line: line.reset())),
         (LOST, UNSENT)),
    Cell("an end before TLS", before=answers(), opens=False, log=(INSECURE,)),
    Cell("two seconds without a reader", steps(stops_reading, waits(2), reads_again, all_sound_arrives),
         is_fast=True),
    Cell("nine seconds without a reader",
         steps(stops_reading, waits_for(WAITING), reads_again, waits_for(LEFT), all_sound_arrives),
         (WAITING, LEFT)),
    Cell("no reader until the end",
         steps(stops_reading, waits_for(WAITING), stops, waits_for(WAITED_IN_VAIN)),
         (WAITING, WAITED_IN_VAIN, UNSENT, CANCELLED), is_red=False),
    Cell("final pieces that come two seconds late",
         steps(stops_writing, says("two"), says("three"), waits(2), writes_again, expects("One two three")),
         text="One two three", is_fast=True),
    Cell("final pieces that come after the stop",
         steps(stops_writing, says("two"), stops, waits(0.5), writes_again, expects("One two")),
         text="One two", is_red=False),
    Cell("two pieces before a reset", steps(says("two"), expects("One two"),
                                            loses(lambda line: line.reset())),
         (LOST, UNSENT), "One two"),
    after_the_stop("a stream that is not closed", waits_for(CANCELLED), log=(CANCELLED,)),
    after_the_stop("a final piece after the end of the sound", says("two"), expects("One two"),
                   lambda w: w.stream.close(), text="One two", may_log=(CANCELLED,), is_fast=True),
    after_the_stop("a final piece a second after the end of the sound", waits(1), says("two"),
                   expects("One two"), lambda w: w.stream.close(), text="One two", may_log=(CANCELLED,)),
    after_the_stop("a reset after the end of the sound", is_read, loses(lambda line: line.reset()),
                   log=(LOST,)),
]


class Network(FaultTest):
    pass


add_cells(Network, CELLS)
