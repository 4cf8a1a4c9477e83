#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The first sentence of a new user, without a key and without a network: install, start, switch over
to the local service, speak. Fails when that takes two minutes.

usage: first_sentence.py PACKAGE...

What the packages depend on has to be downloaded already, so that no time is the network's. This changes
the system; packaging/linux/test-deb calls it on one that is dropped afterwards.
"""

import subprocess
import sys
import time

from desktop import Desktop
from installed_session import InstalledSession

LIMIT = 120.0


class Steps:
    """Prints how long each step of the user has taken."""

    def __init__(self):
        self._start = self._last = time.monotonic()

    def end(self, name):
        now = time.monotonic()
        print(f"  {now - self._last:5.1f} s  {name}", flush=True)
        self._last = now

    @property
    def total(self):
        return self._last - self._start


def main(packages):
    with Desktop(wm=True, a11y=True, audio=True) as desktop:
        steps = Steps()
        subprocess.run(["apt-get", "install", "-y", "-qq", "--no-install-recommends", *packages],
                       check=True, stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL)
        steps.end("apt install of both packages, with everything that they depend on")
        session = InstalledSession(desktop)
        session.start()
        steps.end("start, until the setup window is open and closed")
        session.switch("on")
        steps.end("tarvik-local-speech on, until the setup window is open and closed")
        session.dictate()
        steps.end("an editor is opened, the sentence spoken, and saved in the editor")
        print(f"The first sentence: {steps.total:.0f} s after the beginning of apt install", flush=True)
        assert steps.total < LIMIT, steps.total
        session.end()


if __name__ == "__main__":
    main(sys.argv[1:])
