#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A program for a terminal. Copies every byte from the terminal to a file and keeps a journal.

usage: terminal_target.py FILE JOURNAL
"""

import os
import sys
import tty

from journal import Journal

tty.setraw(0)
journal = Journal(sys.argv[2])
length = 0
with open(sys.argv[1], "wb", buffering=0) as file:
    while received := os.read(0, 65536):
        length += len(received)
        file.write(received)
        # A reader of the journal finds the text in the file.
        journal.changed(length)
