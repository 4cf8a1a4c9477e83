# SPDX-License-Identifier: MIT

"""Editors that are read through accessibility, as a screen reader reads them."""

import contextlib
import pathlib
import subprocess

from accessible import ScreenReader
from bus import NoReply
from desktop import wait_for
from matrix.rows import ProgramTarget, Row

TEXT_EVENTS = pathlib.Path(__file__).with_name("text_events.py")


class Editor(Row):
    """An editor whose window has this title, a pattern."""

    title = ""
    arguments = ()
    environment = {}
    clears_while_held = False
    max_passes = 1
    stamped = "by a reader of the accessibility events that the text has changed"

    def __init__(self, desktop):
        super().__init__(desktop)
        self._reader = ScreenReader(desktop)
        self.target = ProgramTarget(
            desktop, self.title, [self.program, *self.arguments], self.environment)
        self._field = wait_for(self._focused_text, f"the text of {self.program}", 30)
        watch = desktop.spawn(
            ["/usr/bin/python3", "-B", TEXT_EVENTS, self._reader.address,
             *self._field.address, self.path], stdout=subprocess.PIPE)
        watch.stdout.readline()
        self._length_before = 0

    def _focused_text(self):
        return next((element for application in self._reader.applications
                     for element in self._texts_in(application)), None)

    @staticmethod
    def _texts_in(application):
        try:
            for element in application.descendants:
                if element.has("focused") and element.has("editable"):
                    yield element
        except NoReply:
            pass  # The tree is being built.

    def length(self, text):
        return self._length_before + len(text)

    @property
    def text(self):
        return self._field.text

    def clear(self):
        # The first keys after a recording may close a menu that Alt has opened.
        for _ in range(3):
            self.desktop.run(["xdotool", "key", "Escape", "key", "ctrl+a", "key", "Delete"])
            with contextlib.suppress(TimeoutError):
                wait_for(lambda: self.text == "", f"an empty text in {self.program}", 2)
                break
        else:
            raise TimeoutError(f"the text of {self.program} cannot be emptied")
        self._length_before = self.journal.length

    def close(self):
        super().close()
        self._reader.close()


class Mousepad(Editor):
    program = "mousepad"
    title = ".*Mousepad"


class Featherpad(Editor):
    program = "featherpad"
    arguments = ("--standalone",)
    title = ".*FeatherPad|Untitled.*"


class GnomeTextEditor(Editor):
    program = "gnome-text-editor"
    arguments = ("--standalone", "--ignore-session")
    title = ".*Text Editor"
    environment = {"GSK_RENDERER": "cairo"}
