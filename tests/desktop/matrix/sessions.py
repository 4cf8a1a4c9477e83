# SPDX-License-Identifier: MIT

"""The desktop sessions of docs/desktops.md, each with its keyboard."""

import dataclasses
import pathlib
import re
import shutil
import subprocess
import typing

import gnome
from application import READY
from desktop import Desktop
from gnome import GnomeDesktop
from gnome_parts import GnomeKeyboard
from keyboard import BETWEEN_KEYS
from kwin import KWinDesktop
from kwin_parts import KWinKeyboard
from pressed_keys import ALT, SPACE, PressedKeys
from session_test import REGISTERED, close_setup_window
from sway import LabwcDesktop, SwayDesktop
from sway_parts import WaylandKeyboard
from windows import wait_for_window

# What X servers add to the kernel's number of a key.
KEY_OFFSET = 8


class XKeyboard(PressedKeys):
    """The keyboard of an X server."""

    def __init__(self, desktop, _binaries):
        super().__init__()
        self._desktop = desktop

    def _send(self, key, is_pressed):
        self._desktop.run(["xdotool", "keydown" if is_pressed else "keyup", str(key + KEY_OFFSET),
                           *BETWEEN_KEYS])


class BoundKeyboard(WaylandKeyboard):
    """The keyboard where a binding of the user's own toggles. A pedal calls the actions of a hold."""

    def _call(self, action):
        self._desktop.run([self._desktop.dictate, action])

    def hold(self):
        self._call("press")

    def end_hold(self):
        self._call("release")

    def toggle(self):
        self.tap(ALT, SPACE)


@dataclasses.dataclass(frozen=True)
class Session:
    name: str
    # The program that has to be installed, and its package, whose version is stated.
    program: str
    package: str
    is_wayland: bool
    # Makes a desktop; gets whether X programs are to run there.
    desktop: typing.Callable
    keyboard: typing.Callable
    # Closes the setup window; gets the desktop and the keyboard.
    close_setup: typing.Callable = close_setup_window
    # The lines of the log after which one can dictate.
    ready: tuple = (*READY, *REGISTERED)

    @property
    def is_missing(self):
        return not shutil.which(self.program) or (self.name == "GNOME Shell" and gnome.missing())

    @property
    def title(self):
        """The session with its version and that of the system."""
        output = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", self.package],
                                capture_output=True, text=True, check=True).stdout
        version = re.search(r"[0-9]+(\.[0-9]+)?", output.rpartition(":")[2])
        # The next release has no number yet.
        release = re.search(r'^VERSION_(?:ID|CODENAME)="?(\w+)',
                            pathlib.Path("/etc/os-release").read_text(), re.MULTILINE)
        return f"{self.name} {version.group()} (Debian {release.group(1)})"


def _common(**options):
    return {"a11y": True, "audio": True} | options


SESSIONS = {session.name: session for session in (
    Session("X11, openbox", "openbox", "openbox", False,
            lambda _: Desktop(**_common(wm=True)), XKeyboard,
            lambda desktop, _keyboard: wait_for_window(desktop).close()),
    Session("Sway", "sway", "sway", True,
            lambda has_x: SwayDesktop(**_common(xwayland="enable" if has_x else "disable")),
            WaylandKeyboard),
    Session("labwc", "labwc", "labwc", True,
            lambda _: LabwcDesktop(**_common()), BoundKeyboard,
            ready=("typing by a virtual keyboard in Wayland", *READY)),
    Session("KWin", "kwin_wayland", "kwin-wayland", True,
            lambda has_x: KWinDesktop(**_common(xwayland=has_x)), KWinKeyboard),
    Session("GNOME Shell", "gnome-shell", "gnome-shell", True,
            lambda has_x: GnomeDesktop(**_common(xwayland=has_x)),
            lambda desktop, _binaries: GnomeKeyboard(desktop)),
)}
