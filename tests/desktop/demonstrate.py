#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Shows a dictation on a private desktop: the real application, service, hotkey and text editor.

usage: demonstrate.py BINARIES FOLDER

Leaves screenshots and the transcript in FOLDER. The exit status is 1 when the wrong words arrive.
"""

import pathlib
import shutil
import sys

from application import VERSION, Application, write_settings
from desktop import Desktop, wait_for
from keyboard import Keyboard
from local_service import LocalService
from microphone import Microphone
from similarity import MIN_SIMILARITY, similarity
from windows import activate, wait_for_window

LOOK_FILES = pathlib.Path(__file__).parent / "look"
SIZE = (1040, 760)
# Left, top, width and height: the middle of the screen.
EDITOR = (150, 220, 740, 320)
PANEL_HEIGHT = 34
PANELS = {
    "xfce4-panel": ["xfce4-panel", "--disable-wm-check"],
    "lxqt-panel": ["lxqt-panel"],
}
# The setup window has fewer colours than this until the application's icon is drawn.
MIN_ICON_COLORS = 200
PAPER = {"#FCFCFC", "#FDFDFD", "#FEFEFE", "#FFFFFF"}
SENTENCES = (
    "it is a beautiful day to write a letter",
    "my hands are in my pockets",
    "the words appear in your text editor",
)
PAUSE = 1.0
ESTABLISHED = "01"


def decorate(desktop, panel="xfce4-panel"):
    """Sets up the background, the panel and the style of the toolkits."""
    config = pathlib.Path(desktop.environment["XDG_CONFIG_HOME"])
    # The editor reads its settings from a file then.
    desktop.environment["GSETTINGS_BACKEND"] = "keyfile"
    for source, destination in (
        ("gtk-settings.ini", "gtk-3.0/settings.ini"),
        ("gtk-settings.ini", "gtk-4.0/settings.ini"),
        ("gsettings.ini", "glib-2.0/settings/keyfile"),
        ("xfce4-panel.xml", "xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml"),
        ("lxqt-panel.conf", "lxqt/panel.conf"),
    ):
        (config / destination).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(LOOK_FILES / source, config / destination)
    desktop.run(["hsetroot", "-add", "#d9a58a", "-add", "#5b7fa6", "-add", "#24395c",
                 "-gradient", "160"])
    desktop.spawn(PANELS[panel])
    wait_for(lambda: desktop.run(["xdotool", "search", "--onlyvisible", "--class", panel],
                                 check=False), "the panel")


class Editor:
    """A text editor with an empty document. `place` is left, top, width and height of its window."""

    def __init__(self, desktop, place, program="gnome-text-editor"):
        self._desktop = desktop
        self._file = pathlib.Path(desktop.environment["HOME"]) / "Notes.txt"
        self._file.touch()
        process = desktop.spawn([program, self._file])
        self._window = wait_for(
            lambda: self._desktop.run(
                ["xdotool", "search", "--onlyvisible", "--name", "Notes.txt"], check=False).strip(),
            "the editor", process=process)
        left, top, width, height = place
        desktop.run(["xdotool", "windowsize", "--sync", self._window, str(width), str(height),
                     "windowmove", self._window, str(left), str(top)])
        self.activate()

    def activate(self):
        activate(self._desktop, self._window)

    def saved_text(self):
        """Has the editor save its document; returns the text."""
        self._desktop.run(["xdotool", "key", "ctrl+s"])
        return self._file.read_text().strip()


def picture(desktop, path):
    desktop.run(["import", "-window", "root", path])


def colors(desktop, area):
    """The colours in an area of the screen, given as WxH+X+Y."""
    pixels = desktop.run(["import", "-window", "root", "-crop", area, "-depth", "8", "txt:-"])
    return {line.split()[2] for line in pixels.splitlines()[1:]}


def wait_for_page(desktop, editor):
    """Waits until the page of the editor at this place is visible."""
    left, top, width, height = editor
    middle = f"8x8+{left + width // 2}+{top + height // 2}"
    wait_for(lambda: colors(desktop, middle) <= PAPER, "the editor's page")


def wait_for_status_icon(desktop):
    width = int(desktop.size.partition("x")[0])
    tray = f"40x{PANEL_HEIGHT - 4}+{width - 90}+2"
    wait_for(lambda: len(colors(desktop, tray)) > 3, "the status icon")


def is_streaming(host):
    """Whether the service at this host and port has a connection."""
    port = f":{int(host.rpartition(':')[2]):04X}"
    for table in ("/proc/net/tcp", "/proc/net/tcp6"):
        for line in pathlib.Path(table).read_text().splitlines()[1:]:
            _, local, _, state, *_ = line.split()
            if local.endswith(port) and state == ESTABLISHED:
                return True
    return False


def demonstrate(binaries, folder):
    with Desktop(wm=True, a11y=True, audio=True, size="{}x{}".format(*SIZE)) as desktop:
        print("A private desktop is running; nobody sees it.", flush=True)
        decorate(desktop)
        service = LocalService(desktop, binaries)
        write_settings(desktop.environment,
                       {"deepgramApiKey": "local", "deepgramHost": service.host,
                        "lastWelcomeShownForVersion": VERSION})
        microphone = Microphone(desktop.fifo())
        editor = Editor(desktop, EDITOR)
        application = Application(desktop, binaries, {"SSL_CERT_FILE": str(service.authority)})
        keyboard = Keyboard(desktop)
        setup = wait_for_window(desktop)
        left, top, _, _ = setup.frame
        wait_for(lambda: len(colors(desktop, f"80x80+{left + 30}+{top + 45}")) > MIN_ICON_COLORS,
                 "the drawn setup window")
        wait_for_status_icon(desktop)
        picture(desktop, folder / "1-setup.png")
        setup.close()
        editor.activate()
        wait_for_page(desktop, EDITOR)
        picture(desktop, folder / "2-before.png")

        print("Holding Alt+Space and speaking …", flush=True)
        keyboard.hold()
        wait_for(desktop.is_microphone_open, "an open microphone")
        for sentence in SENTENCES[:-1]:
            microphone.speak(sentence)
            microphone.pause(PAUSE)
        microphone.wait_until_silent()
        microphone.speak(SENTENCES[-1])
        picture(desktop, folder / "3-speaking.png")
        microphone.wait_until_silent()
        keyboard.release()
        print("Let go.", flush=True)
        application.log.wait_for("audio.stop")
        wait_for(lambda: not is_streaming(service.host), "the end of the stream")
        # The last words may arrive between the picture and the text, so both are repeated until the
        # text stays the same.
        text = ""
        while text != (text := wait_for(editor.saved_text, "text in the editor")):
            picture(desktop, folder / "4-after.png")
        microphone.pull_out()
        return text


def main():
    binaries, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    folder.mkdir(exist_ok=True)
    text = demonstrate(binaries, folder.resolve())
    (folder / "transcript.txt").write_text(text + "\n")
    print("Spoken:")
    for sentence in SENTENCES:
        print("  " + sentence)
    print(f"Arrived in the text editor:\n  {text}")
    print(f"Screenshots and the transcript are in {folder}/.")
    if similarity(" ".join(SENTENCES), text) < MIN_SIMILARITY:
        sys.exit("That is not what was spoken.")


if __name__ == "__main__":
    main()
