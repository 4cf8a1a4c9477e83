#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A program with a window that it does not show, and with two threads. One reads every message of the X
server at once. The other works for two seconds after each line on standard input.

Prints the window's number, and "done" at the end of the work.
"""

import sys
import threading
import time

from Xlib import display


def work():
    for _ in sys.stdin:
        end = time.monotonic() + 2
        while time.monotonic() < end:
            pass
        print("done", flush=True)


connection = display.Display()
window = connection.screen().root.create_window(0, 0, 1, 1, 0, connection.screen().root_depth)
connection.sync()
print(window.id, flush=True)
threading.Thread(target=work, daemon=True).start()
while True:
    connection.next_event()
