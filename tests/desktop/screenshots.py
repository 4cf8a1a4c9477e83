#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes screenshots of every window and of the tray of the real application, in eight appearances.

usage: screenshots.py [BINARIES [FOLDER]]

BINARIES is build/default/bin and FOLDER build/pictures where they are not given.
"""

import itertools
import subprocess

from appearance import Appearance
from desktop import Desktop
from panels import PanelIcon
from picture_arguments import picture_arguments
from window_scenarios import AN_HOUR, TEN_MINUTES, WindowScenarios

# The margin around a menu, in pixels at scale 1.
MARGIN = 12
ALL = [Appearance(panel, is_dark, scale) for panel, is_dark, scale
       in itertools.product(("xfce4-panel", "lxqt-panel"), (False, True), (1, 2))]


class ScreenshotTaker:
    """Takes the screenshots of one desktop."""

    def __init__(self, desktop, appearance, folder):
        self._desktop = desktop
        self._appearance = appearance
        self._folder = folder

    def _grab(self, place):
        return subprocess.run(
            ["import", "-window", "root", "-crop", place, "-depth", "8", "ppm:-"],
            env=self._desktop.environment, capture_output=True, check=True, timeout=30).stdout

    def take(self, area, name):
        """Takes a picture of an area of the screen, given as left, top, width and height, as soon as
        the area does not change any more."""
        left, top, width, height = area
        place = f"{width}x{height}+{left}+{top}"
        before = b""
        while before != (before := self._grab(place)):
            pass
        pixels = self._desktop.folder / "picture.ppm"
        pixels.write_bytes(before)
        picture = self._folder / f"{name}-{self._appearance.name}.png"
        # optipng would keep an existing file under another name.
        picture.unlink(missing_ok=True)
        self._desktop.run(["optipng", "-quiet", "-o5", pixels, "-out", picture], timeout=300)

    def take_windows(self, scenarios):
        with scenarios.setup() as setup:
            self.take(setup.window.frame, "setup")
            scenarios.shrink(setup)
            self.take(setup.window.frame, "setup-smallest")
        with scenarios.setup_with_nothing_granted() as setup:
            self.take(setup.window.frame, "setup-nothing-granted")
        with scenarios.prompt() as prompt:
            self.take(prompt.frame, "prompt")
        for name, total in (("call-after-ten-minutes", TEN_MINUTES),
                            ("call-after-an-hour", AN_HOUR)):
            with scenarios.call_to_action(total) as call:
                self.take(call.frame, name)

    def take_tray(self, scenarios):
        """The icon with its menu, while recording and while idle."""
        icon = PanelIcon(self._desktop, self._appearance.scale)
        with scenarios.dictation() as listening:
            with listening():
                icon.wait_until_red()
                self._take_menu(scenarios, icon, "tray-recording")
            icon.wait_until_idle()
            self._take_menu(scenarios, icon, "tray-idle")

    def _take_menu(self, scenarios, icon, name):
        left, top, _, height = icon.open_menu()
        margin = MARGIN * self._appearance.scale
        first = min(left, icon.place[0]) - margin
        screen, _, _ = self._appearance.size.partition("x")
        self.take((first, 0, int(screen) - first, top + height + margin),
                  f"{name}-{self._appearance.panel.partition('-')[0]}")
        scenarios.keyboard.press("Escape")
        # On the icon the pointer would open a tooltip.
        self._appearance.rest_pointer(self._desktop)


def main():
    binaries, folder = picture_arguments()
    for appearance in ALL:
        with Desktop(wm=True, a11y=True, audio=True, size=appearance.size) as desktop:
            appearance.decorate(desktop)
            taker = ScreenshotTaker(desktop, appearance, folder)
            with WindowScenarios(
                    desktop, binaries, appearance.environment, appearance.scale) as scenarios:
                taker.take_tray(scenarios)
                # The windows look the same on both panels.
                if appearance.panel == ("lxqt-panel" if appearance.is_dark else "xfce4-panel"):
                    taker.take_windows(scenarios)
        print(appearance.panel, appearance.name, flush=True)


if __name__ == "__main__":
    main()
