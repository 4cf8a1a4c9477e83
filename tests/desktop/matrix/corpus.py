# SPDX-License-Identifier: MIT

"""The texts that are entered into every program."""

import pathlib

# A text of this many characters counts as long, and its time is stated apart.
LONG_TEXT = 1000


def read():
    """The texts by their names, in their order. Each text is one line of corpus.txt."""
    lines = pathlib.Path(__file__).with_name("corpus.txt").read_text(encoding="utf-8")
    return dict(line.split("\t") for line in lines.rstrip("\n").split("\n"))


def is_long(text):
    return len(text) >= LONG_TEXT
