# SPDX-License-Identifier: MIT

"""The processes on a private desktop, whichever process has started them."""

import contextlib
import os
import pathlib
import signal

from reaper import MARK, processes_with_mark


def desktop_processes(desktop):
    """The identifiers of all processes of the desktop, as a set."""
    return set(processes_with_mark(f"{MARK}={desktop.folder}".encode()))


def processes_named(desktop, name):
    """The processes of the desktop whose name is `name`."""
    found = []
    for process in desktop_processes(desktop):
        # The process may have ended in the meantime.
        with contextlib.suppress(OSError):
            if pathlib.Path(f"/proc/{process}/comm").read_text().strip() == name:
                found.append(process)
    return found


def application_processes(desktop, binaries):
    """The processes that run the application."""
    program = (binaries / "tarvik-dictate").resolve()
    found = []
    for process in desktop_processes(desktop):
        # The process may have ended in the meantime.
        with contextlib.suppress(OSError):
            if pathlib.Path(f"/proc/{process}/exe").resolve() == program:
                found.append(process)
    return found


def kill_processes(desktop, word):
    """Kills the processes of the desktop that have `word` in their command; returns their number."""
    killed = 0
    for process in desktop_processes(desktop):
        with contextlib.suppress(OSError):
            if word.encode() in pathlib.Path(f"/proc/{process}/cmdline").read_bytes():
                os.kill(process, signal.SIGKILL)
                killed += 1
    return killed


def end_applications(desktop, binaries):
    for process in application_processes(desktop, binaries):
        with contextlib.suppress(ProcessLookupError):
            os.kill(process, signal.SIGTERM)
