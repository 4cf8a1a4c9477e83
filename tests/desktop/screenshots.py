#!/usr/bin/python3
"""Takes pictures of every window and of the tray of the real application, on desktops of eight kinds.

usage: pictures.py BINARIES FOLDER
"""

import itertools
import pathlib
import subprocess
import sys

from desktop import Desktop
from panels import PanelIcon
from surroundings import Surroundings
from tour import AN_HOUR, TEN_MINUTES, Tour

# Around a menu, in pixels of scale 1.
MARGIN = 12
ALL = [Surroundings(panel, is_dark, scale) for panel, is_dark, scale
       in itertools.product(("xfce4-panel", "lxqt-panel"), (False, True), (1, 2))]


class Photographer:
    def __init__(self, desktop, surroundings, folder):
        self._desktop = desktop
        self._surroundings = surroundings
        self._folder = folder

    def _grab(self, place):
        return subprocess.run(
            ["import", "-window", "root", "-crop", place, "-depth", "8", "ppm:-"],
            env=self._desktop.environment, capture_output=True, check=True, timeout=30).stdout

    def take(self, area, name):
        """Takes a picture of a part of the screen, given as left, top, width and height, as soon as
        nothing moves there any more."""
        left, top, width, height = area
        place = f"{width}x{height}+{left}+{top}"
        before = b""
        while before != (before := self._grab(place)):
            pass
        pixels = self._desktop.folder / "picture.ppm"
        pixels.write_bytes(before)
        picture = self._folder / f"{name}-{self._surroundings.name}.png"
        # One that is there already would be kept under another name.
        picture.unlink(missing_ok=True)
        self._desktop.run(["optipng", "-quiet", "-o5", pixels, "-out", picture], timeout=300)

    def take_windows(self, tour):
        with tour.setup() as setup:
            self.take(setup.window.frame, "setup")
            tour.shrink(setup)
            self.take(setup.window.frame, "setup-smallest")
        with tour.setup_with_nothing_granted() as setup:
            self.take(setup.window.frame, "setup-nothing-granted")
        with tour.prompt() as prompt:
            self.take(prompt.frame, "prompt")
        for name, total in (("call-after-ten-minutes", TEN_MINUTES),
                            ("call-after-an-hour", AN_HOUR)):
            with tour.call_to_action(total) as call:
                self.take(call.frame, name)

    def take_tray(self, tour):
        """The icon with its menu, in both states."""
        icon = PanelIcon(self._desktop, self._surroundings.scale)
        with tour.dictation() as listening:
            with listening():
                icon.wait_until_red()
                self._take_menu(tour, icon, "tray-recording")
            icon.wait_until_idle()
            self._take_menu(tour, icon, "tray-idle")

    def _take_menu(self, tour, icon, name):
        left, top, _, height = icon.open_menu()
        margin = MARGIN * self._surroundings.scale
        first = min(left, icon.place[0]) - margin
        screen, _, _ = self._surroundings.size.partition("x")
        self.take((first, 0, int(screen) - first, top + height + margin),
                  f"{name}-{self._surroundings.panel.partition('-')[0]}")
        tour.keyboard.press("Escape")
        # Left on the icon it would bring up the icon's name.
        self._surroundings.rest_pointer(self._desktop)


def main():
    binaries, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    for surroundings in ALL:
        with Desktop(wm=True, a11y=True, audio=True, size=surroundings.size) as desktop:
            surroundings.furnish(desktop)
            photographer = Photographer(desktop, surroundings, folder)
            with Tour(desktop, binaries, surroundings.environment, surroundings.scale) as tour:
                photographer.take_tray(tour)
                # The windows are the same beside either panel.
                if surroundings.panel == ("lxqt-panel" if surroundings.is_dark else "xfce4-panel"):
                    photographer.take_windows(tour)
        print(surroundings.panel, surroundings.name, flush=True)


if __name__ == "__main__":
    main()
