"""The application's processes on a private desktop, whoever started them."""

import contextlib
import os
import pathlib
import signal

from guardian import MARK, marked_processes


def marked(desktop):
    """Every process of the desktop, as a set of numbers."""
    return set(marked_processes(f"{MARK}={desktop.folder}".encode()))


def instances(desktop, binaries):
    """The processes that run the application."""
    program = (binaries / "tarvik-dictate").resolve()
    found = []
    for process in marked(desktop):
        # It may have ended meanwhile.
        with contextlib.suppress(OSError):
            if pathlib.Path(f"/proc/{process}/exe").resolve() == program:
                found.append(process)
    return found


def kill_part(desktop, word):
    """Kills the processes of the desktop that have the word in their command; how many those are."""
    killed = 0
    for process in marked(desktop):
        with contextlib.suppress(OSError):
            if word.encode() in pathlib.Path(f"/proc/{process}/cmdline").read_bytes():
                os.kill(process, signal.SIGKILL)
                killed += 1
    return killed


def end_instances(desktop, binaries):
    for process in instances(desktop, binaries):
        with contextlib.suppress(ProcessLookupError):
            os.kill(process, signal.SIGTERM)
