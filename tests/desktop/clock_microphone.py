# SPDX-License-Identifier: MIT

"""A virtual microphone whose samples tell when they were recorded.

usage: clock_microphone.py FIFO RATE

Feeds a mono pipe source of the sound server with a sawtooth. Prints the monotonic time of the first
sample, in seconds. Sample `n` is recorded `n / RATE` seconds after the first one.
"""

import array
import contextlib
import fcntl
import os
import pathlib
import select
import struct
import subprocess
import sys
import termios
import time

# Seconds between two writes. Hardware delivers in pieces as well.
INTERVAL = 0.001
# The sawtooth leaves 0 and 1 out: a hole of the recording is 0, and the conversion makes 0 of 1.
LOWEST = 2
PERIOD = 32000
# Seconds of sound that may wait for the sound server. A microphone keeps no sound that nobody reads.
MAX_WAITING = 0.002
# A pipe takes a block of this size completely or not at all.
BLOCK_SAMPLES = select.PIPE_BUF // 2


class ClockMicrophone:
    def __init__(self, desktop, fifo, rate):
        self._desktop = desktop
        self._rate = rate
        self._process = desktop.spawn(
            [sys.executable, "-B", pathlib.Path(__file__), fifo, str(rate)],
            stdout=subprocess.PIPE, text=True)
        self._start = float(self._process.stdout.readline())

    def close(self):
        self._process.stdout.close()
        self._desktop.end(self._process)

    def recording_time(self, sample, arrival):
        """When the 16-bit `sample` of a recording, which reached the service at `arrival`, was
        recorded. Both are monotonic times in seconds."""
        # The conversion to floats and back takes one from every positive sample.
        position = sample + 1 - LOWEST
        if not 0 <= position < PERIOD:
            raise ValueError(f"the microphone has no sample {sample}")
        elapsed = int((arrival - self._start) * self._rate)
        number = elapsed - (elapsed - position) % PERIOD
        return self._start + number / self._rate


def drop_old_sound(pipe, max_samples):
    """Reads the oldest sound that nobody has read, so that at most `max_samples` are left."""
    waiting, = struct.unpack("i", fcntl.ioctl(pipe, termios.FIONREAD, bytes(4)))
    if waiting > max_samples * 2:
        with contextlib.suppress(BlockingIOError):  # The sound server has just read it.
            os.read(pipe, waiting - max_samples * 2)


def feed(fifo, rate):
    sawtooth = array.array("h", (LOWEST + n for n in range(PERIOD))).tobytes()
    pipe = os.open(fifo, os.O_RDWR | os.O_NONBLOCK)
    max_waiting = int(rate * MAX_WAITING)
    start = time.monotonic()
    print(start, flush=True)
    delivered = 0
    while True:
        due = int((time.monotonic() - start) * rate)
        drop_old_sound(pipe, max_waiting)
        # A late write leaves the old samples out, so that no sample arrives long after its time.
        delivered = max(delivered, due - max_waiting)
        while delivered < due:
            position = delivered % PERIOD
            count = min(due - delivered, PERIOD - position, BLOCK_SAMPLES)
            os.write(pipe, sawtooth[position * 2:(position + count) * 2])
            delivered += count
        time.sleep(INTERVAL)


if __name__ == "__main__":
    feed(sys.argv[1], int(sys.argv[2]))
