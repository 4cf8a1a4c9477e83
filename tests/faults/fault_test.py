# SPDX-License-Identifier: MIT

"""Runs cells of the fault matrix on a private desktop, each as one test."""

import os
import pathlib
import re
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "desktop"))

from application import READY, VERSION, Application, write_settings  # noqa: E402
from authority import Authority  # noqa: E402
from bus import Bus  # noqa: E402
from cell import Cell, unmatched  # noqa: E402
from desktop import wait_for  # noqa: E402
from dictation_test import BINARIES, DictationTest  # noqa: E402
from scripted_service import ScriptedService  # noqa: E402
from switchboard import Switchboard  # noqa: E402
from windows import wait_for_window  # noqa: E402

NAME, PATH = "com.tarvik.dictate", "/com/tarvik/dictate"
INTERFACE = "org.freedesktop.Application"
FIRST, SECOND = "One", "Again"
# Lines of every recording, whatever its number.
USUAL = ("startRecording (session=", "stopRecording (session=", "audio.stop (session=")
# The service's answer to the end of the sound, and what a connection that does not open adds when the
# cell takes its time.
OPTIONAL = ("Deepgram error: The service closed the connection (1000)",
            "Deepgram WS open timeout (5s) — connect failed")


class FaultTest(DictationTest):
    """A world for cells: a desktop, a target, a service behind a switchboard, and an application that
    lives on from cell to cell, unless a cell needs a new one."""

    # Set by the program that runs the cells.
    cells = ()
    toolkit = "gtk3"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.authority = Authority(cls.desktop.folder / "authority")
        cls.certificate = cls.authority.certificate("good")
        cls.service = ScriptedService(*cls.certificate)
        cls.addClassCleanup(cls.service.close)
        cls.board = Switchboard()
        cls.addClassCleanup(cls.board.close)
        cls.board.peer = cls.service.port
        cls.target = None
        cls.application = None
        cls.started_with = None
        cls.addClassCleanup(cls.close_application)
        cls.prepare()

    @classmethod
    def prepare(cls):
        """Starts what the cells of a group need. For derived classes."""

    @classmethod
    def close_application(cls):
        if cls.application is not None:
            cls.application.close()
            cls.application = None

    @property
    def host(self):
        return f"localhost:{self.board.port}"

    # What the faults use.

    @property
    def stream(self):
        """The latest connection to the service."""
        return self.service.streams[-1]

    @property
    def log(self):
        return self.application.log

    @property
    def pid(self):
        return self.application.pid

    def do_action(self, name="toggle"):
        bus = Bus(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        try:
            bus.call(NAME, PATH, INTERFACE, "ActivateAction", "(sava{sv})", name, [], {})
        finally:
            bus.close()

    def press(self):
        self.do_action()

    def wait(self, seconds):
        end = time.monotonic() + seconds
        wait_for(lambda: time.monotonic() > end, "the end of a time", seconds + 5)

    def wait_for_lines(self, *parts, timeout=12.0):
        for part in parts:
            self.log.wait_for(part, timeout, since=self.first_line)

    # How a cell runs.

    def start_for(self, cell):
        settings, environment, command = (
            self.settings_of(cell), dict(cell.environment), tuple(cell.command))
        wanted = (settings, environment, command)
        runs = self.application is not None and self.application.process.poll() is None
        if runs and type(self).started_with == wanted:
            return
        type(self).close_application()
        path = write_settings(self.desktop.environment, settings)
        type(self).settings_path = path
        variables = {"SSL_CERT_FILE": str(self.authority.root)} | environment
        type(self).application = Application(self.desktop, BINARIES, variables, READY, command)
        type(self).started_with = wanted
        wait_for_window(self.desktop).close()

    def settings_of(self, cell):
        values = {"deepgramApiKey": "a-key", "lastWelcomeShownForVersion": VERSION,
                  "deepgramHost": self.host, "loginItemAutoConfigured": "true"}
        return {key: value for key, value in (values | dict(cell.settings)).items()
                if value is not None}

    def ensure_target(self):
        """A target that lives, is empty and has the keyboard."""
        if self.target is None or self.target.process.poll() is not None:
            target = super().start_target(self.toolkit)
            # The target stays for the next cells.
            self._cleanups.pop()
            type(self).target = target
            self.addClassCleanup(target.close)
        else:
            self.target.activate()
            wait_for(lambda: self.target.is_active, "the target in front")
        self.target.tell("clear")
        self.target.wait_for_text("")

    def begin(self, opens=True):
        """Starts a recording; returns its connection if it opens one."""
        number = len(self.service.streams) + 1
        self.press()
        self.log.wait_for("startRecording", since=self.first_line)
        return self.service.stream(number) if opens else None

    def stop(self):
        self.press()
        self.log.wait_for("audio.stop", since=self.first_line)
        self.tray.wait_for_icon(recording=False)

    def run_cell(self, cell):
        if cell.needs_root and os.geteuid() != 0:
            self.skipTest("the fault needs root")
        self.ensure_target()
        self.start_for(cell)
        self.first_line = len(self.log)
        try:
            cell.before(self)
            self.ensure_front()
            stream = self.begin(cell.opens)
            if cell.opens:
                stream.say(FIRST)
                self.target.wait_for_text(FIRST)
            cell.fault(self)
            if cell.ends:
                self.check_end(cell)
            else:
                self.tray.wait_for_icon(recording=cell.is_red)
                # What the log must say may take its time, and the stop would change it.
                self.wait_for_lines(*cell.log)
                if cell.is_red:
                    self.stop()
            self.last_line = len(self.log)
        finally:
            cell.heal(self)
            self.board.restore(self.service.port)
            self.service.refusal, self.service.answer_delay = None, 0
        self.check_text(cell)
        self.check_log(cell)
        self.check_next(cell)

    def ensure_front(self):
        if self.target.process.poll() is None:
            wait_for(lambda: self.target.is_active, "the target in front")

    def check_end(self, cell):
        self.assertEqual(self.application.process.wait(15), cell.status)
        self.log.read_to_end()

    def check_text(self, cell):
        if self.target.process.poll() is None:
            self.target.wait_for_text(cell.text if cell.opens or cell.text != FIRST else "", timeout=20)

    def check_log(self, cell):
        lines = [line for line in self.log.lines[self.first_line:self.last_line]
                 if not any(part in line for part in USUAL)]
        unexpected, missing = unmatched(lines, cell.log)
        unexpected = [line for line in unexpected
                      if not any(part in line for part in (*OPTIONAL, *cell.may_log))]
        self.assertEqual((unexpected, missing), ([], []), "unexpected and missing log lines")

    def check_next(self, cell):
        """The next dictation works, in the same application if that lives."""
        self.ensure_target()
        if cell.is_lasting:
            self.start_for(Cell("healthy"))
        elif cell.ends:
            self.start_for(cell)
        self.ensure_front()
        self.first_line = len(self.log)
        stream = self.begin()
        stream.say(SECOND)
        self.target.wait_for_text(SECOND)
        self.tray.wait_for_icon(recording=True)
        self.stop()
        wait_for(lambda: stream.is_closed, "the end of the connection")

    def cell_name(self):
        return getattr(self, self._testMethodName).cell.name

    def tearDown(self):
        if self.has_failed() and self.application is not None:
            print(f"The application's log in {self.id()}:", *self.log.lines[-40:], sep="\n  ", flush=True)
            type(self).close_application()
            type(self).started_with = None


def add_cells(test, cells):
    """Makes one test of each cell."""
    for cell in cells:
        name = "test_" + re.sub(r"\W+", "_", cell.name)
        if hasattr(test, name):
            raise ValueError(f"two cells are called {cell.name}")

        def run(self, cell=cell):
            self.run_cell(cell)
        run.cell = cell
        setattr(test, name, run)
