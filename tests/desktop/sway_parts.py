# SPDX-License-Identifier: MIT

"""What stands on a Sway desktop: the keyboard, the windows, and programs to dictate into."""

import json
import subprocess

from desktop import wait_for
from matrix.browsers import PageServer, chromium_command, firefox_command
from pressed_keys import PressedKeys
from target import FootTerminal, Target, WidgetTarget


class WaylandKeyboard(PressedKeys):
    """The keyboard of the desktop."""

    program = "wayland-keyboard"

    def __init__(self, desktop, binaries):
        super().__init__()
        self._desktop = desktop
        self._process = desktop.spawn(
            [binaries / self.program], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            text=True)
        self._process.stdout.readline()

    def _send(self, key, is_pressed):
        self._process.stdin.write(f"{'press' if is_pressed else 'release'} {key}\n")
        self._process.stdin.flush()
        self._process.stdout.readline()

    def close(self):
        self._desktop.end(self._process)
        self._process.stdout.close()


def sway_tree(desktop):
    return json.loads(desktop.run(["swaymsg", "-t", "get_tree", "--raw"]))


def windows(desktop):
    """All windows, as Sway describes them."""
    found = []

    def add(node):
        if node.get("pid"):
            found.append(node)
        for child in node["nodes"] + node["floating_nodes"]:
            add(child)

    add(sway_tree(desktop))
    return found


def wait_for_sway_window(desktop, condition, what):
    return wait_for(lambda: next(filter(condition, windows(desktop)), None), what)


class SwayTarget(Target):
    @property
    def is_active(self):
        return any(window["focused"] and window["name"] == self.title
                   for window in windows(self._desktop))

    def activate(self):
        self._desktop.run(["swaymsg", f"[title=\"^{self.title}$\"] focus"])

    def _find_window(self, *_):
        wait_for(lambda: self.is_active, f"“{self.title}” in front", process=self.process)


class SwayWidgetTarget(SwayTarget, WidgetTarget):
    """As WidgetTarget."""


class FootTarget(SwayTarget, FootTerminal):
    """As FootTerminal."""


class BrowserTarget(SwayTarget):
    """A page of a server on loopback."""

    def __init__(self, desktop, command):
        super().__init__(desktop, None)
        self._server = PageServer(desktop.folder / "journal")
        self.process = desktop.spawn(command(self._server.address + "/field"))
        self._server.wait_until_ready()
        wait_for(lambda: any(w["focused"] for w in windows(desktop)), "the browser")

    @property
    def text(self):
        return self._server.tell("publish")

    @property
    def sizes(self):
        """How many sizes the page has had. A menu bar that comes or goes changes the size."""
        return int(self._server.tell("sizes"))

    def close(self):
        super().close()
        self._server.close()


def firefox(desktop):
    return BrowserTarget(desktop, lambda address: [
        "env", "MOZ_ENABLE_WAYLAND=1", *firefox_command(desktop, address)])


def chromium(desktop):
    return BrowserTarget(desktop, lambda address: chromium_command(
        desktop, address, "--ozone-platform=wayland", "--disable-gpu"))
