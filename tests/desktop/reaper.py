# SPDX-License-Identifier: MIT

"""Cleans up after a private desktop, even when the process that made it was killed.

usage: reaper.py FOLDER

Waits for the end of standard input: the maker closes it or dies. Then ends every process that has
the folder in its environment, and removes the folder.
"""

import contextlib
import os
import pathlib
import shutil
import signal
import sys
import time

MARK = "TARVIK_DESKTOP_FOLDER"
# Seconds after which a process that ignores SIGTERM is killed.
TERMINATION_TIMEOUT = 2.0


def processes_with_mark(mark):
    """The processes of a desktop, including those that a bus has activated."""
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            # A process that has just ended, or that belongs to another user, is not ours.
            with contextlib.suppress(OSError):
                if mark in (entry / "environ").read_bytes().split(b"\0"):
                    yield int(entry.name)


def end_all(mark):
    deadline = time.monotonic() + TERMINATION_TIMEOUT
    terminated = set()
    while processes := list(processes_with_mark(mark)):
        is_late = time.monotonic() > deadline
        for process in processes:
            with contextlib.suppress(ProcessLookupError):
                if is_late:
                    os.kill(process, signal.SIGKILL)
                elif process not in terminated:
                    os.kill(process, signal.SIGTERM)
                    os.kill(process, signal.SIGCONT)
        terminated.update(processes)
        time.sleep(0.01)


def main():
    folder = sys.argv[1]
    # A signal to the whole process group ends the maker, and the end of the maker is enough.
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)
    print("ready", flush=True)
    sys.stdin.buffer.read()
    end_all(f"{MARK}={folder}".encode())
    shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
