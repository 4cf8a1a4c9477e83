# SPDX-License-Identifier: MIT

"""Editors that keep the journal themselves, by a script in their own language."""

import os
import pathlib
import signal
import time

from desktop import wait_for
from matrix.rows import ProgramTarget, Row
from target import FOLDER


class ScriptedEditor(Row):
    """An editor that carries out the command in a file."""

    title = ""
    command = ()
    # The time of these programs gets worse with the length of a line.
    max_passes = 5

    def __init__(self, desktop):
        super().__init__(desktop)
        self._files = {name: desktop.folder / f"editor-{name}" for name in ("out", "command", "pid")}
        clock = (time.time_ns() - time.monotonic_ns()) / 1e9
        self.target = ProgramTarget(desktop, self.title, self.command, {
            "TARGET_FOLDER": str(FOLDER), "TARGET_JOURNAL": str(self.path),
            "TARGET_CLOCK": f"{clock:.6f}",
            **{f"TARGET_{name.upper()}": str(path) for name, path in self._files.items()}})
        self._process = int(wait_for(self._read_process, f"the start of {self.program}", 30))

    def _read_process(self):
        path = self._files["pid"]
        return path.exists() and path.read_text()

    def _tell(self, command):
        path = self._files["command"]
        partial = pathlib.Path(f"{path}.partial")
        partial.write_text(command)
        partial.replace(path)
        self.wake()
        wait_for(lambda: not path.exists(), f"{self.program} to {command} its text", 10)

    def wake(self):
        """Tells the editor that there is a command, if it does not look by itself."""

    @property
    def text(self):
        self._tell("publish")
        return self._files["out"].read_text(encoding="utf-8", errors="replace")

    def clear(self):
        self._tell("clear")


VIM_SCRIPT = ("-u", "NONE", "-N", "-S", str(FOLDER / "vim_target.vim"))


class VimInXterm(ScriptedEditor):
    program = "vim"
    title = "vim-target"
    command = ("xterm", "-u8", "-title", "vim-target", "-e", "vim", *VIM_SCRIPT)
    paste = ("primary", ("shift+Insert",))
    stamped = "inside vim, by its event that the text has changed, which comes when no key is waiting"


class Gvim(ScriptedEditor):
    program = "gvim"
    title = "vim-target"
    command = ("gvim", "-f", *VIM_SCRIPT)
    paste = ("clipboard", ("ctrl+r", "plus"))
    stamped = VimInXterm.stamped


class Emacs(ScriptedEditor):
    program = "emacs"
    title = "emacs-target"
    command = ("emacs", "-Q", "-l", str(FOLDER / "emacs_target.el"))
    paste = ("clipboard", ("ctrl+y",))
    stamped = "inside Emacs, by its hook for changes"

    def wake(self):
        os.kill(self._process, signal.SIGUSR1)
