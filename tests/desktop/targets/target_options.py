# SPDX-License-Identifier: MIT

"""The common parts of the targets: options, the file with the text, and commands.

Every target knows the commands "sleep SECONDS" and "work SECONDS", which print "busy", then keep the
main loop from its events, asleep or at work, and print "done".
"""

import argparse
import os
import time

from journal import Journal


def parse(description):
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--widget", choices=["entry", "text"], default="text",
                        help="a single line or a text area")
    parser.add_argument("--text", default="", help="the initial text")
    parser.add_argument("--select", metavar="A:B",
                        help="select from character A to character B; A:A places the caret")
    parser.add_argument("--max-length", type=int, metavar="N",
                        help="the maximum length of a single line, in characters (Qt)")
    parser.add_argument("--menu-bar", action="store_true", help="with a menu bar (Alt+F)")
    parser.add_argument("--readonly", action="store_true")
    parser.add_argument("--button", action="store_true",
                        help="a button that has the focus, instead of the text")
    parser.add_argument("--title", default="target")
    parser.add_argument("--out", metavar="FILE", required=True,
                        help="a file that always has the whole text")
    parser.add_argument("--password", action="store_true", help="a line that hides its text (GTK 3)")
    parser.add_argument("--journal", metavar="FILE",
                        help="a file for the time of each change and of its painted frame; the text is "
                             "then published at the command \"publish\" alone")
    options = parser.parse_args()
    options.journal = Journal(options.journal) if options.journal else None
    options.selection = None
    if options.select:
        first, last = options.select.split(":")
        options.selection = (int(first), int(last))
    return options


def publish(options, text, suffix=""):
    """Replaces the file in one step, so that a reader never sees a partial text."""
    partial = f"{options.out}.{os.getpid()}.partial"
    with open(partial, "w", encoding="utf-8", newline="") as file:
        file.write(text)
    os.replace(partial, options.out + suffix)


def on_change(options, text, length):
    """Handles a change of the text. `text` and `length` are functions that return them."""
    if options.journal:
        options.journal.changed(length())
    else:
        publish(options, text())


def announce(line):
    print(line, flush=True)


class TypedKeys:
    """Counts the pressed keys that have a text, and those that stand for nothing. A modifier is
    neither."""

    def __init__(self):
        self._count = 0
        self._silent = 0

    def press(self, text, is_silent=False):
        """Called when a key with this text was pressed."""
        if text:
            self._count += 1
        elif is_silent:
            self._silent += 1

    def announce(self):
        announce(f"keys {self._count} {self._silent}")


def keep_busy(name, seconds):
    announce("busy")
    if name == "sleep":
        time.sleep(seconds)
    else:
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            pass
    announce("done")


def read_commands(handle):
    """Passes every line of standard input to `handle`. Returns a function that the toolkit's loop
    calls whenever file descriptor 0 is readable; it returns false at the end of the input."""
    os.set_blocking(0, False)
    pending = bytearray()

    def readable():
        chunk = os.read(0, 65536)
        if not chunk:
            return False
        pending.extend(chunk)
        while b"\n" in pending:
            line, _, rest = bytes(pending).partition(b"\n")
            pending[:] = rest
            name, _, argument = line.decode("utf-8").partition(" ")
            if name in ("sleep", "work"):
                keep_busy(name, float(argument))
            else:
                handle(line.decode("utf-8"))
        return True

    return readable
