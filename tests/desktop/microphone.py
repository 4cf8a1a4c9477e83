"""Somebody who sits at the microphone: silent, and speaking when told to."""

import array
import os
import pathlib
import random
import select
import subprocess
import tempfile
import threading
import time

from desktop import wait_for

INTERVAL = 0.02
SAMPLE_BYTES = 2
# A pipe takes this much whole or not at all; the sound server dies of half a frame.
BLOCK_BYTES = select.PIPE_BUF
VOICE = "slt"


def spoken(text, rate=16000):
    """The samples of a sentence, mono, signed 16-bit little-endian."""
    with tempfile.TemporaryDirectory() as folder:
        wave = pathlib.Path(folder) / "speech.wav"
        subprocess.run(["flite", "-voice", VOICE, "-t", text, "-o", wave], check=True)
        return subprocess.run(
            ["sox", wave, "-t", "raw", "-r", str(rate), "-c", "1", "-e", "signed", "-b", "16", "-"],
            check=True, capture_output=True,
        ).stdout


def quiet_noise(rate, seconds=1.0):
    """What a good microphone delivers in a quiet room."""
    generator = random.Random(1)
    return array.array("h", (generator.randint(-6, 6) for _ in range(int(rate * seconds)))).tobytes()


def loudest(samples):
    """The largest amplitude in signed 16-bit samples, 0 to 32768."""
    values = array.array("h", samples[: len(samples) // SAMPLE_BYTES * SAMPLE_BYTES])
    return max((abs(value) for value in values), default=0)


class Microphone:
    """Feeds a microphone of the sound server in real time, as a real one does."""

    def __init__(self, fifo, rate=16000, channels=1):
        self.rate = rate
        self._fifo = fifo
        self._channels = channels
        self._noise = self._on_all_channels(quiet_noise(rate))
        self._speech = bytearray()
        self._lock = threading.Lock()
        self.plug_in()

    def plug_in(self):
        """Begins to feed the sound server's pipe, which has to be there."""
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._feed, daemon=True)
        self._thread.start()

    def pull_out(self):
        """Feeds the pipe no longer."""
        self._ended.set()
        self._thread.join()

    def speak(self, text):
        """Says a sentence, after what is still being said; does not wait."""
        self.play(spoken(text, self.rate))

    def play(self, samples):
        """Plays samples at this microphone's rate, mono, after what is still being said."""
        with self._lock:
            self._speech += self._on_all_channels(samples)

    def pause(self, seconds):
        """Puts a pause after what is still being said."""
        self.play(quiet_noise(self.rate, seconds))

    @property
    def is_silent(self):
        """Whether everything was said."""
        return not self._speech

    def wait_until_silent(self, deadline=60.0):
        wait_for(lambda: self.is_silent, "the end of the speech", deadline)

    def _on_all_channels(self, samples):
        return b"".join(samples[i:i + SAMPLE_BYTES] * self._channels
                        for i in range(0, len(samples), SAMPLE_BYTES))

    def _feed(self):
        pipe = os.open(self._fifo, os.O_RDWR | os.O_NONBLOCK)
        start = time.monotonic()
        delivered = 0
        while not self._ended.wait(INTERVAL):
            due = int((time.monotonic() - start) * self.rate)
            sound = self._next((due - delivered) * SAMPLE_BYTES * self._channels)
            delivered = due
            try:
                for first in range(0, len(sound), BLOCK_BYTES):
                    os.write(pipe, sound[first:first + BLOCK_BYTES])
            except BlockingIOError:
                pass  # The microphone is asleep: sound that nobody takes is lost.
        os.close(pipe)

    def _next(self, size):
        with self._lock:
            sound = bytes(self._speech[:size])
            del self._speech[:size]
        rest = size - len(sound)
        return sound + (self._noise * (rest // len(self._noise) + 1))[:rest]
