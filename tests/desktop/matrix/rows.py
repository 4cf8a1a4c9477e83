# SPDX-License-Identifier: MIT

"""The programs of the matrix. Each row starts its program, reads the text back and empties it."""

import pathlib
import shutil

from matrix.journal_reader import JournalReader
from target import FOLDER, Target, WidgetTarget

# A browser or an office program takes long to start the first time.
PROGRAM_START_TIMEOUT = 60.0


def utf16_units(text):
    return len(text.encode("utf-16-le")) // 2


class ProgramTarget(Target):
    """Any program. `title` is a pattern that the whole title of its window has to match."""

    def __init__(self, desktop, title, command, environment=None):
        super().__init__(desktop, title)
        self.process = desktop.spawn(command, env=desktop.environment | (environment or {}))
        self._find_window(PROGRAM_START_TIMEOUT)


class Row:
    """A running program with a text field that has the keyboard. Closed by close()."""

    # The program that has to be installed.
    program = "/usr/bin/python3"
    # What starts the program and finds its window.
    widget_target = WidgetTarget
    program_target = ProgramTarget
    # How the times of the row came about, for the published page.
    stamped = ""
    # Whether the journal has painted frames too.
    paints = False
    # The selection and the key for a paste.
    paste = ("clipboard", ("ctrl+v",))
    # Whether clear() works while a hotkey is held.
    clears_while_held = True
    # The number of times that the texts are entered into the program before it is emptied.
    max_passes = 5

    def __init__(self, desktop):
        self.desktop = desktop
        self.path = desktop.folder / "journal"
        self.journal = JournalReader(self.path)

    @classmethod
    def missing(cls):
        """The name of the program if it is not installed."""
        return None if shutil.which(cls.program) else cls.program

    @staticmethod
    def length(text):
        """The length of a text in the unit of the journal."""
        return len(text)

    @property
    def text(self):
        raise NotImplementedError

    def clear(self):
        raise NotImplementedError

    def activate(self):
        self.target.activate()

    @property
    def has_ended(self):
        return self.target.process.poll() is not None

    def close(self):
        self.target.close()


class WidgetRow(Row):
    """One of the project's own targets, which takes commands on its standard input."""

    toolkit, widget = "gtk3", "text"
    options = {}
    environment = {}
    paints = True
    stamped = "inside the program, by its signal that the text has changed"

    def __init__(self, desktop):
        super().__init__(desktop)
        self.target = self.widget_target(desktop, self.toolkit, widget=self.widget,
                                         journal=self.path, environment=self.environment,
                                         **self.options)

    @property
    def text(self):
        self.target.tell("publish")
        return self.target.text

    def clear(self):
        self.target.tell("clear")


class Gtk3Entry(WidgetRow):
    widget = "entry"


class Gtk3Text(WidgetRow):
    pass


class Gtk3Password(WidgetRow):
    widget = "entry"
    options = {"password": True}


class Gtk4Entry(WidgetRow):
    toolkit, widget = "gtk4", "entry"


class Gtk4Text(WidgetRow):
    toolkit = "gtk4"


class QtRow(WidgetRow):
    length = staticmethod(utf16_units)


class Qt5Entry(QtRow):
    toolkit, widget = "qt5", "entry"


class Qt5Text(QtRow):
    toolkit = "qt5"


class Qt6Entry(QtRow):
    toolkit, widget = "qt6", "entry"


class Qt6Text(QtRow):
    toolkit = "qt6"


class TkText(WidgetRow):
    toolkit = "tk"


class SwingText(QtRow):
    program = "java"
    toolkit = "swing"
    paints = False


class Xterm(Row):
    program = "xterm"
    command = ("xterm", "-u8", "-title", "terminal", "-e")
    stamped = "by a program in the terminal, after each read of its raw input"
    paste = ("primary", ("shift+Insert",))
    clears_while_held = True

    def __init__(self, desktop):
        super().__init__(desktop)
        self._received = desktop.folder / "received"
        self._begin = 0
        self.target = self.program_target(desktop, "terminal", [
            *self.command, "/usr/bin/python3", "-B", str(FOLDER / "terminal_target.py"),
            str(self._received), str(self.path)])

    def length(self, text):
        return self._begin + len(text.encode())

    @property
    def text(self):
        data = self._received.read_bytes() if self._received.exists() else b""
        return data[self._begin:].decode(errors="replace")

    def clear(self):
        # The terminal keeps nothing: what was received so far no longer counts.
        self._begin = pathlib.Path(self._received).stat().st_size if self._received.exists() else 0
