#!/usr/bin/python3
"""Takes pictures of every window of the real application, on desktops of several kinds.

usage: pictures.py BINARIES FOLDER

Leaves every picture as it was on the screen in FOLDER/all, and one sheet a window in FOLDER.
"""

import dataclasses
import pathlib
import sys
import time

from application import VERSION, Application, write_settings
from demonstrate import LOOK, furnish
from desktop import Desktop, wait_for
from keyboard import Keyboard
from microphone import Microphone
from scripted_service import ScriptedService, make_certificate
from tray import Tray
from windows import Window, wait_for_window

PANEL_HEIGHT = 34
# Around a window, in pixels of scale 1: its shadow would be here.
SURROUNDINGS = 10
SMALLEST = (830, 555)
# Above this many seconds of dictation in all, both calls to action come one after the other.
ALMOST_AN_HOUR = 3599
COLORS = "160"
KEY = "deepgramApiKey"


@dataclasses.dataclass(frozen=True)
class Surroundings:
    name: str
    panel: str
    # How far from the right edge the panel has its first icon.
    icon: int
    is_dark: bool = False
    scale: int = 1
    # How the application learns of the scale: by Qt's own variable, or by the size of text.
    scaled_by_text: bool = False

    @property
    def size(self):
        return f"{1280 * self.scale}x{800 * self.scale}"

    @property
    def environment(self):
        variables = {}
        if self.is_dark:
            # Qt reads the colours of this desktop by itself; for others it needs further packages.
            variables |= {"XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true",
                          "KDE_SESSION_VERSION": "5"}
        if self.scale != 1 and not self.scaled_by_text:
            variables["QT_SCALE_FACTOR"] = str(self.scale)
        return variables


ALL = (
    Surroundings("light", "xfce4-panel", icon=58),
    Surroundings("dark", "xfce4-panel", icon=58, is_dark=True),
    Surroundings("light-twice", "lxqt-panel", icon=42, scale=2),
    Surroundings("dark-large-text", "lxqt-panel", icon=84, is_dark=True, scale=2,
                 scaled_by_text=True),
)
# What goes into each sheet, and how wide a picture of scale 1 becomes there.
SHEETS = {
    "setup": (("setup", "setup-smallest"), "44%"),
    "prompt": (("prompt",), "80%"),
    "call-to-action": (("call-after-ten-minutes", "call-after-an-hour"), "70%"),
    "tray": (("tray-idle", "tray-recording"), "70%"),
}


class Photographer:
    def __init__(self, desktop, surroundings, folder):
        self._desktop = desktop
        self._surroundings = surroundings
        self._folder = folder

    def _grab(self, area):
        return self._desktop.run(
            ["import", "-window", "root", "-crop", area, "-depth", "8", "ppm:-"],
            encoding="latin-1")

    def take(self, area, name):
        """Takes a picture of a part of the screen, given as left, top, width and height, as soon as
        nothing moves there any more."""
        left, top, width, height = area
        place = f"{width}x{height}+{max(left, 0)}+{max(top, 0)}"
        before = ""
        while before != (before := self._grab(place)):
            pass
        self._desktop.run(["import", "-window", "root", "-crop", place, "+repage",
                           self._folder / f"{name}-{self._surroundings.name}.png"])

    def take_window(self, window, name):
        margin = SURROUNDINGS * self._surroundings.scale
        left, top, width, height = window.frame
        self.take((left - margin, top - margin, width + 2 * margin, height + 2 * margin), name)


def furnish_further(desktop, surroundings):
    """Puts the background, the panel and the colours there."""
    config = pathlib.Path(desktop.environment["XDG_CONFIG_HOME"])
    if surroundings.is_dark:
        (config / "kdeglobals").write_text((LOOK / "kdeglobals-dark").read_text())
    if surroundings.scaled_by_text:
        desktop.run(["xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER",
                     f"Xft.dpi:\t{96 * surroundings.scale}\n"])
    furnish(desktop, surroundings.panel)


class Session:
    """The application on one desktop."""

    def __init__(self, desktop, binaries, surroundings, photographer):
        self._desktop, self._binaries = desktop, binaries
        self._surroundings, self._photographer = surroundings, photographer
        self._keyboard = Keyboard(desktop)
        key, self._authority = make_certificate(desktop.folder / "certificates")
        self._service = ScriptedService(key, self._authority)
        self._microphone = Microphone(desktop.fifo())

    def close(self):
        self._microphone.pull_out()
        self._service.close()

    def _start(self, **settings):
        write_settings(self._desktop.environment,
                       {"deepgramHost": self._service.host, "lastWelcomeShownForVersion": VERSION}
                       | settings)
        return Application(self._desktop, self._binaries,
                           {"SSL_CERT_FILE": str(self._authority)} | self._surroundings.environment)

    def without_a_key(self):
        """The setup window at its smallest, with no key, and the question for the key."""
        application = self._start()
        setup = wait_for_window(self._desktop)
        width, height = (str(side * self._surroundings.scale) for side in SMALLEST)
        self._desktop.run(["xdotool", "windowsize", "--sync", setup.number, width, height])
        self._photographer.take_window(setup, "setup-smallest")
        setup.close()
        self._keyboard.hold()
        prompt = wait_for_window(self._desktop)
        self._keyboard.release()
        self._photographer.take_window(prompt, "prompt")
        self._keyboard.press("Escape")
        prompt.wait_until_gone()
        application.close()

    def with_a_key(self):
        """The setup window, the icon with its menu, and both calls to action."""
        application = self._start(**{KEY: "a-key", "totalDictationSeconds": ALMOST_AN_HOUR})
        setup = wait_for_window(self._desktop)
        self._photographer.take_window(setup, "setup")
        setup.close()
        self._take_tray("tray-idle")
        for number, name in ((1, "call-after-an-hour"), (2, "call-after-ten-minutes")):
            self._keyboard.toggle()
            self._service.stream(number)
            begin = time.monotonic()
            wait_for(lambda: time.monotonic() > begin + 1.1, "a second of usage")
            if number == 1:
                self._take_tray("tray-recording")
            self._keyboard.toggle()
            call = wait_for_window(self._desktop)
            self._photographer.take_window(call, name)
            call.close()
        application.close()

    def _take_tray(self, name):
        """The icon, with the menu that a click on it opens."""
        width, height = 640 * self._surroundings.scale, 240 * self._surroundings.scale
        screen = int(self._surroundings.size.partition("x")[0])
        self._desktop.run(["xdotool", "mousemove", str(screen - self._surroundings.icon),
                           str(PANEL_HEIGHT // 2), "click", "1"])
        self._photographer.take((screen - width, 0, width, height), name)
        self._keyboard.press("Escape")


def make_sheet(desktop, folder, name):
    """Puts all pictures of a window into one, each twofold one at half its size."""
    views, size = SHEETS[name]
    arguments = []
    for view in views:
        for surroundings in ALL:
            picture = folder / "all" / f"{view}-{surroundings.name}.png"
            arguments += ["(", picture, "-resize", f"{100 // surroundings.scale}%",
                          "-resize", size, ")"]
    sheet = folder / f"{name}.png"
    desktop.run(["montage", *arguments, "-tile", "2x", "-geometry", "+6+6", "-background",
                 "#808080", "+dither", "-colors", COLORS, f"PNG8:{sheet}"])
    desktop.run(["optipng", "-quiet", sheet])


def main():
    binaries, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    (folder / "all").mkdir(parents=True, exist_ok=True)
    for surroundings in ALL:
        with Desktop(wm=True, a11y=True, audio=True, size=surroundings.size) as desktop:
            furnish_further(desktop, surroundings)
            photographer = Photographer(desktop, surroundings, folder / "all")
            session = Session(desktop, binaries, surroundings, photographer)
            session.without_a_key()
            session.with_a_key()
            session.close()
        print(surroundings.name, flush=True)
    with Desktop(x11=False) as desktop:
        for name in SHEETS:
            make_sheet(desktop, folder, name)


if __name__ == "__main__":
    main()
