# SPDX-License-Identifier: MIT

"""Measures one program in one session: every text held and toggled, by the real application."""

import contextlib
import datetime
import os
import subprocess
import threading

from accessible import ScreenReader
from application import VERSION, Application, write_settings
from desktop import wait_for
from matrix.columns import REPORTS, Entry, Outcome
from matrix import corpus
from matrix.dictation import RecordingStream
from matrix.run import describe, progress
from matrix.session_rows import ROWS, X11, row_class, wait_for_keyboard
from matrix.sessions import SESSIONS
from microphone import Microphone
from scripted_service import ScriptedService, make_certificate
from sway import drop_rights

SERVICES = ("hotkeys", "typing", "the front window")
TEXT_INTERFACES = ("org.a11y.atspi.Text", "org.a11y.atspi.EditableText")
# The log's words for a program that takes no text by accessibility.
REFUSED = "its text will be typed"
# More wrong texts than these in one column end the column.
MAX_WRONG = 4


class AccessibilityWatch:
    """Counts what is inserted by accessibility in all programs of a desktop, and tells when a
    program has answered every call about its text."""

    def __init__(self, desktop):
        self._desktop = desktop
        self.count = 0
        self._open = set()
        self._marks = 0
        reader = ScreenReader(desktop)
        self._address = reader.address
        reader.close()
        self._process = desktop.spawn(
            ["stdbuf", "-oL", "dbus-monitor", "--address", self._address, "--profile"],
            stdout=subprocess.PIPE, text=True)
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        with self._process.stdout as lines:
            for line in lines:
                kind, *fields = line.rstrip("\n").split("\t")
                if kind == "mc":
                    _time, serial, sender, _destination, _path, interface, member = fields
                    self._note_call((sender, serial), interface, member)
                elif kind in ("mr", "err"):
                    _time, _serial, _sender, destination, reply_serial = fields
                    self._open.discard((destination, reply_serial))

    def _note_call(self, call, interface, member):
        if interface in TEXT_INTERFACES:
            self._open.add(call)
        self.count += member == "InsertText"
        self._marks += member == "GetId"

    def wait_until_answered(self):
        """Waits for the answers to every call that was made before."""
        marks = self._marks
        self._desktop.run(["dbus-send", "--print-reply", f"--bus={self._address}",
                           "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus.GetId"])
        wait_for(lambda: self._marks > marks and not self._open, "the answers about the text")

    def close(self):
        self._desktop.end(self._process)


class Cell:
    """One program of one session, with the application."""

    def __init__(self, desktop, session, row_name, binaries, stack):
        self._desktop = desktop
        self.keyboard = session.keyboard(desktop, binaries)
        stack.callback(self.keyboard.close)
        stack.callback(Microphone(desktop.fifo()).pull_out)
        key, authority = make_certificate(desktop.folder / "certificates")
        self._service = ScriptedService(key, authority)
        stack.callback(self._service.close)
        write_settings(desktop.environment, {
            "deepgramApiKey": "a-key", "deepgramHost": self._service.host,
            "lastWelcomeShownForVersion": VERSION})
        self.application = Application(desktop, binaries, {"SSL_CERT_FILE": str(authority)}, session.ready)
        stack.callback(self.application.close)
        session.close_setup(desktop, self.keyboard)
        self._row = row_class(row_name, session.is_wayland)(desktop)
        stack.callback(self._row.close)
        wait_for_keyboard(self._row, self.keyboard)
        self._accessibility = AccessibilityWatch(desktop)
        stack.callback(self._accessibility.close)

    @property
    def means(self):
        """What serves the session, by the application's own word."""
        lines = [line.removeprefix("TarvikDictate: ") for line in self.application.log.lines]
        return {service: line.removeprefix(service + " by ").partition(":")[0]
                for service in SERVICES for line in lines if line.startswith(service + " by ")}

    def measure(self, is_held, repetitions, outcome):
        entry = Entry(self._row, outcome)
        entry.clear()
        seen = len(self.application.log)
        number = len(self._service.streams) + 1
        self.keyboard.hold() if is_held else self.keyboard.toggle()
        stream = RecordingStream(self._service.stream(number))
        try:
            stream.wait_for_audio()
            self._enter_all(entry, stream, repetitions, outcome)
        finally:
            self.keyboard.end_hold() if is_held else self.keyboard.toggle()
            with contextlib.suppress(AssertionError):
                self.application.log.wait_for("stopRecording", since=seen)
            outcome.reports += [line for line in self.application.log.lines[seen:]
                                if any(part in line for part in REPORTS)]
        entry.check_rest()

    def _enter_all(self, entry, stream, repetitions, outcome):
        separator = ""
        for _ in range(repetitions):
            outcome.passes += 1
            for name, text in corpus.read().items():
                inserts, refusals = self._accessibility.count, self.application.log.count(REFUSED)
                entry.enter(name, separator + text, lambda text=text: stream.say(text))
                is_typed = (self._accessibility.count == inserts
                            or self.application.log.count(REFUSED) > refusals)
                outcome.roads.setdefault("typed keys" if is_typed else "accessibility",
                                         []).append(name)
                separator = " "
                if len(outcome.wrong) > MAX_WRONG:
                    return
            # What is cleared before it is read back counts as never written, and is typed.
            self._accessibility.wait_until_answered()
            entry.clear()


def measure_cell(session_name, row_name, repetitions, binaries):
    """Measures on a desktop of its own; returns the results. To be called in a process of its own,
    which goes on without rights."""
    drop_rights()
    session = SESSIONS[session_name]
    result = {"date": datetime.datetime.now().astimezone().isoformat(timespec="minutes"),
              "load": os.getloadavg()[0], "columns": {}}
    row = row_class(row_name, session.is_wayland)
    if row is None or row.missing():
        result["missing"] = row.missing() if row else "no such program there"
        return result
    # What goes wrong with one cell must not cost the others. The page states the failure.
    try:
        with contextlib.ExitStack() as stack:
            desktop = stack.enter_context(session.desktop(ROWS[row_name][2] == X11))
            cell = Cell(desktop, session, row_name, binaries, stack)
            result["means"] = cell.means
            for key in ("held", "toggled"):
                outcome = Outcome()
                try:
                    cell.measure(key == "held", repetitions, outcome)
                except Exception as error:  # noqa: BLE001
                    outcome.error = describe(error)
                result["columns"][key] = outcome.values()
                progress(f"{session_name}, {row_name}, {key}: "
                         f"{outcome.texts - len(outcome.wrong)} of {outcome.texts} right"
                         + (f"; {outcome.error}" if outcome.error else ""))
    except Exception as error:  # noqa: BLE001
        result["error"] = describe(error)
        progress(f"{session_name}, {row_name}: {result['error']}")
    return result
