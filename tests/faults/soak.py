#!/usr/bin/python3
# SPDX-License-Identifier: MIT

"""Dictates for a long time and fails when the application holds more and more.

usage: soak.py [--sessions N] [--minutes M]

First come N short recordings with one final piece each, then recordings of five minutes with a piece
every two seconds, for M minutes in all. The target must have every piece. Prints a table in Markdown.
"""

import argparse
import statistics
import sys
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[1] / "desktop"))

from bus import Bus  # noqa: E402
from desktop import wait_for  # noqa: E402
from dictation_test import DictationTest  # noqa: E402
from resources import Resources, XRes, resources  # noqa: E402

APPLICATION = ("com.tarvik.dictate", "/com/tarvik/dictate", "org.freedesktop.Application")
# In seconds. A connection keeps a thread and three descriptors for 10 s after its end.
SETTLING_TIME = 11.5
# In seconds. What the first minute brings is no growth.
WARM_UP = 60
SAMPLE_INTERVAL = 60
RECORDING_TIME = 300
PIECE_INTERVAL = 2
# How far the median memory of the last third may lie above that of the first third. The allocator
# keeps a few hundred kilobytes more or less.
MAX_GROWTH_KIB = 400
# Below this number a trend is the allocator's noise.
MIN_SAMPLES = 6


class Soak(DictationTest):
    sessions = 200
    minutes = 0

    def setUp(self):
        self.service = self.start_scripted_service()
        # The call to action would open a window after ten minutes, and another after an hour.
        self.application = self.start_application(
            self.service, settings={"ctaTenMinuteShown": "true", "ctaSixtyMinuteShown": "true"})
        self.target = self.start_target("gtk3")
        self.x_server = XRes(self.desktop.environment["DISPLAY"])
        self.bus = Bus(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(self.bus.close)
        self.expected = ""
        self.recordings = 0
        # Pairs of the seconds since the start and what was held then, without a recording.
        self.samples = []
        self.start = time.monotonic()

    def toggle(self):
        self.bus.call(*APPLICATION, "ActivateAction", "(sava{sv})", "toggle", [], {})

    def begin(self):
        self.recordings += 1
        self.toggle()
        return self.service.stream(self.recordings)

    def end(self, stream):
        self.toggle()
        self.application.log.wait_for(f"audio.stop (session={self.recordings})", since=self.seen)
        wait_for(lambda: stream.is_closed, "the end of the connection")
        del stream.audio[:]

    @property
    def seen(self):
        """From where on the log is searched: an hour's log is long."""
        return max(0, len(self.application.log) - 50)

    def say(self, stream, text, is_first):
        stream.say(text)
        self.expected += text if is_first else " " + text
        self.target.wait_for_text(self.expected, timeout=20)

    def start_anew(self):
        """Empties the target, which would else write a long text at each piece."""
        if len(self.expected) > 2000:
            self.target.tell("clear")
            self.expected = ""

    def sample(self):
        end = time.monotonic() + SETTLING_TIME
        wait_for(lambda: time.monotonic() > end, "a quiet application", SETTLING_TIME + 5)
        held = resources(self.desktop, self.application.pid, self.x_server)
        self.samples.append((time.monotonic() - self.start, self.recordings, held))
        print(f"{self.samples[-1][0]:7.0f} s {self.recordings:6d} recordings  {held}",
              file=sys.stderr, flush=True)

    def is_sample_due(self):
        last = self.samples[-1][0] if self.samples else 0
        return time.monotonic() - self.start > last + (SAMPLE_INTERVAL if self.samples else WARM_UP)

    def test_flat(self):
        for number in range(self.sessions):
            self.start_anew()
            stream = self.begin()
            self.say(stream, f"word{number}", is_first=True)
            self.end(stream)
            if self.is_sample_due():
                self.sample()
        end = time.monotonic() + 60 * self.minutes
        while time.monotonic() < end:
            self.dictate_until(min(end, time.monotonic() + RECORDING_TIME))
            self.sample()
        self.report()
        self.check()

    def dictate_until(self, end):
        stream = self.begin()
        pieces = 0
        while time.monotonic() < end:
            self.start_anew()
            self.say(stream, f"piece{pieces}", is_first=pieces == 0)
            del stream.audio[:-2]
            pieces += 1
            due = time.monotonic() + PIECE_INTERVAL
            wait_for(lambda due=due: time.monotonic() > due, "the next piece")
        self.end(stream)

    def report(self):
        print("| after | recordings | " + " | ".join(Resources._fields).replace("_", " ") + " |")
        print("|---|---|" + "---|" * len(Resources._fields))
        for seconds, recordings, held in self.samples:
            print(f"| {seconds / 60:.0f} min | {recordings} | "
                  + " | ".join(map(str, held)) + " |")

    def check(self):
        self.assertGreater(len(self.samples), 1, "a run this short shows no growth")
        first = self.samples[0][2]
        for seconds, _, held in self.samples[1:]:
            for field in ("descriptors", "threads", "x_resources", "x_pixmap_bytes",
                          "sound_streams"):
                self.assertLessEqual(getattr(held, field), getattr(first, field),
                                     f"{field} after {seconds:.0f} s")
        if len(self.samples) >= MIN_SAMPLES:
            memory = [held.memory_kib for _, _, held in self.samples]
            third = len(memory) // 3
            growth = statistics.median(memory[-third:]) - statistics.median(memory[:third])
            self.assertLess(growth, MAX_GROWTH_KIB, "growth of memory in KiB")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sessions", type=int, default=Soak.sessions)
    parser.add_argument("--minutes", type=float, default=Soak.minutes)
    options = parser.parse_args()
    Soak.sessions, Soak.minutes = options.sessions, options.minutes
    unittest.main(argv=sys.argv[:1])


if __name__ == "__main__":
    main()
