"""Cleans up after a private desktop, even when whoever made it was killed.

usage: guardian.py FOLDER

Waits for the end of standard input, which comes when the maker closes it or dies. Then ends every
process that carries the folder in its environment, and removes the folder.
"""

import contextlib
import os
import pathlib
import shutil
import signal
import sys
import time

MARK = "TARVIK_DESKTOP_FOLDER"
GRACE = 2.0


def marked_processes(mark):
    """Those that began on this desktop, also the ones that a bus started for itself."""
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            # A process that ended meanwhile, or that belongs to somebody else, is none of ours.
            with contextlib.suppress(OSError):
                if mark in (entry / "environ").read_bytes().split(b"\0"):
                    yield int(entry.name)


def end_all(mark):
    force_from = time.monotonic() + GRACE
    asked = set()
    while processes := list(marked_processes(mark)):
        force = time.monotonic() > force_from
        for process in processes:
            with contextlib.suppress(ProcessLookupError):
                if force:
                    os.kill(process, signal.SIGKILL)
                elif process not in asked:
                    os.kill(process, signal.SIGTERM)
                    os.kill(process, signal.SIGCONT)
        asked.update(processes)
        time.sleep(0.01)


def main():
    folder = sys.argv[1]
    # Whoever interrupts the maker ends the desktop through it.
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)
    print("ready", flush=True)
    sys.stdin.buffer.read()
    end_all(f"{MARK}={folder}".encode())
    shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
