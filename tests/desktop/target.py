# SPDX-License-Identifier: MIT

"""Programs to dictate into. A test can read their text."""

import os
import pathlib
import subprocess
import threading

from desktop import START_TIMEOUT, wait_for
from windows import activate, active_window, window_with_title

FOLDER = pathlib.Path(__file__).parent / "targets"
# Reports that the terminal runs, then writes every byte unchanged to the file.
# Java compiles the target each time.
JAVA_START_TIMEOUT = 60.0
JAVA_BRIDGE = "/usr/share/java/java-atk-wrapper.jar"
JAVA = ["java", "-Djavax.accessibility.assistive_technologies=org.GNOME.Accessibility.AtkWrapper",
        "-Djava.library.path=/usr/lib/x86_64-linux-gnu/jni", "-cp", JAVA_BRIDGE]
TERMINAL_SCRIPT = 'stty raw -echo; echo ready > "$0.ready"; exec cat > "$0"'


class Target:
    """The common part of all targets: a window, and a file with the text."""

    count = 0

    def __init__(self, desktop, title):
        Target.count += 1
        self._desktop = desktop
        self.title = title or f"target {Target.count}"
        self.out = desktop.folder / f"target-{Target.count}.txt"

    @property
    def text(self):
        return self.out.read_text(encoding="utf-8", errors="replace") if self.out.exists() else ""

    def wait_for_text(self, expected, timeout=START_TIMEOUT):
        try:
            wait_for(lambda: self.text == expected, f"the text {expected!r}", timeout)
        except TimeoutError as error:
            raise AssertionError(f"{error}; there is {self.text!r}") from None

    @property
    def is_active(self):
        return active_window(self._desktop) == self.window

    def activate(self):
        """Activates the window, as a click on it does."""
        activate(self._desktop, self.window)

    def close(self):
        return self._desktop.end(self.process)

    def _find_window(self, timeout=START_TIMEOUT):
        self.window = wait_for(lambda: window_with_title(self._desktop, self.title),
                               f"the window “{self.title}”", timeout, process=self.process)
        wait_for(lambda: self.is_active, f"“{self.title}” in front", process=self.process)


class WidgetTarget(Target):
    """A window of a toolkit ("gtk3", "gtk4", "qt5", "qt6", "tk", "swing") with one text widget; see
    targets/."""

    def __init__(self, desktop, toolkit, title=None, environment=None, **options):
        super().__init__(desktop, title)
        program = ([*JAVA, f"{FOLDER}/SwingTarget.java"] if toolkit == "swing"
                   else ["/usr/bin/python3", f"{FOLDER}/{toolkit}_target.py"])
        arguments = ["--out", self.out, "--title", self.title]
        for name, value in options.items():
            option = "--" + name.replace("_", "-")
            arguments += [option] if value is True else [option, str(value)]
        self.process = desktop.spawn(
            [*program, *arguments], env=desktop.environment | (environment or {}),
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
        )
        self._answers = []
        threading.Thread(target=self._read, daemon=True).start()
        wait_for(lambda: "ready" in self._answers, "the focus of " + self.title,
                 JAVA_START_TIMEOUT if toolkit == "swing" else START_TIMEOUT, self.process)
        self._find_window()

    def _read(self):
        with self.process.stdout as lines:
            for line in lines:
                self._answers.append(line.strip())

    def tell(self, command):
        """Sends a command to the target's standard input and waits until it is done."""
        before = self._answers.count("done")
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        wait_for(lambda: self._answers.count("done") > before, "the target's " + command)

    @property
    def typed_keys(self):
        """The number of pressed keys with a text that have reached the window."""
        return self._keys()[0]

    @property
    def silent_keys(self):
        """As typed_keys, of keys that stand for nothing. Qt 6 alone."""
        return self._keys()[1]

    def _keys(self):
        self.tell("keys")
        answer = [line for line in self._answers if line.startswith("keys ")][-1]
        return [int(count) for count in answer.split()[1:]]


class WidgetWithoutTitle(WidgetTarget):
    """For a session that names no windows. The widget itself tells that it has the keyboard."""

    def _find_window(self, *_):
        pass


class TerminalTarget(Target):
    """A terminal. The accessibility interface cannot change its text."""

    def __init__(self, desktop, title=None):
        super().__init__(desktop, title)
        self.process = desktop.spawn(
            ["xterm", "-u8", "-title", self.title, "-e", "sh", "-c", TERMINAL_SCRIPT,
             str(self.out)],
        )
        wait_for(lambda: os.path.exists(f"{self.out}.ready"), "the terminal", process=self.process)
        self._find_window()


class FootTerminal(Target):
    """A terminal of Wayland. The accessibility interface does not know it."""

    def __init__(self, desktop, title=None):
        super().__init__(desktop, title)
        self.process = desktop.spawn(
            ["foot", "--title", self.title, "--override", "locked-title=yes",
             "sh", "-c", TERMINAL_SCRIPT, str(self.out)])
        wait_for(lambda: os.path.exists(f"{self.out}.ready"), "the terminal", process=self.process)
        self._find_window()
