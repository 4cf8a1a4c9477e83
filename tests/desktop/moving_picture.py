#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Makes the moving picture of the README: a dictation with the real application, service and editor.

usage: moving_picture.py [BINARIES [FILE]]

BINARIES is build/default/bin and FILE docs/screenshots/dictation.webp where they are not given. A strip
below the editor shows the keys that are down, the sound that the microphone plays, and its words. The
exit status is 1 when the wrong words arrive or the file is too large.
"""

import array
import json
import pathlib
import subprocess
import sys

from application import VERSION, Application, write_settings
from demonstrate import (SENTENCES, Editor, decorate, is_streaming, wait_for_page,
                         wait_for_status_icon)
from desktop import Desktop, wait_for
from keyboard import Keyboard
from local_service import LocalService
from microphone import Microphone, spoken
from panels import PanelIcon, Pixels
from similarity import MIN_SIMILARITY, similarity
from windows import wait_for_window

STAGE = pathlib.Path(__file__).parent / "stage.py"
SIZE = (800, 400)
# Left, top, width and height.
EDITOR = (40, 58, 720, 246)
STRIP = (0, 318, 800, 82)
# The page below the editor's title bar.
PAGE = (60, 115, 680, 180)
LEVEL_INTERVAL = 0.04
# In milliseconds: the first and the last picture can be read.
FIRST, LAST = 1200, 3500
MAX_BYTES = 2_000_000
# Pixels that a few words have at least, and the blinking cursor has not.
WORDS = 300
# The sum of the three parts of a colour, each 0 to 255.
DARK = 300


def loudness(samples, rate):
    """The level of the sound in every LEVEL_INTERVAL, 0 to 1."""
    values, step = array.array("h", samples), int(rate * LEVEL_INTERVAL)
    sums = [sum(map(abs, values[i:i + step])) for i in range(0, len(values), step)]
    return [round(value / max(sums), 2) for value in sums]


class Stage:
    """The strip below the editor, which takes the pictures."""

    def __init__(self, desktop, folder):
        self._process = desktop.spawn(
            ["/usr/bin/python3", "-B", STAGE, folder, *map(str, STRIP)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._wait()

    def _wait(self):
        if self._process.stdout.readline() != "done\n":
            raise RuntimeError("the strip below the editor has ended")

    def do(self, what, **arguments):
        self._process.stdin.write(json.dumps({"do": what, **arguments}) + "\n")
        self._process.stdin.flush()
        self._wait()


def ink(desktop):
    """The number of dark pixels on the page."""
    return sum(red + green + blue < DARK for red, green, blue in Pixels(desktop, PAGE).colors)


class Film:
    """A dictation, from the first picture to the last."""

    def __init__(self, desktop, binaries, folder):
        self._desktop = desktop
        self._service = LocalService(desktop, binaries)
        write_settings(desktop.environment,
                       {"deepgramApiKey": "local", "deepgramHost": self._service.host,
                        "lastWelcomeShownForVersion": VERSION})
        self._microphone = Microphone(desktop.fifo())
        self._editor = Editor(desktop, EDITOR)
        self._application = Application(
            desktop, binaries, {"SSL_CERT_FILE": str(self._service.authority)})
        wait_for_window(desktop).close()
        self._stage = Stage(desktop, folder)
        wait_for_status_icon(desktop)
        self._editor.activate()
        wait_for_page(desktop, EDITOR)

    def _speak(self, sentence):
        samples = spoken(sentence, self._microphone.rate)
        self._stage.do("speak", text=sentence, levels=loudness(samples, self._microphone.rate),
                       interval=LEVEL_INTERVAL)
        self._microphone.play(samples)
        self._microphone.wait_until_silent()

    def shoot(self):
        """Takes the pictures; returns the text that has arrived in the editor."""
        keyboard, icon = Keyboard(self._desktop), PanelIcon(self._desktop)
        self._stage.do("record")
        keyboard.hold()
        wait_for(self._desktop.is_microphone_open, "an open microphone")
        icon.wait_until_red()
        for sentence in SENTENCES[:-1]:
            before = ink(self._desktop)
            self._speak(sentence)
            wait_for(lambda before=before: ink(self._desktop) > before + WORDS, "words in the editor",
                     30.0)
        before = ink(self._desktop)
        self._speak(SENTENCES[-1])
        keyboard.release()
        self._application.log.wait_for("audio.stop")
        wait_for(lambda: not is_streaming(self._service.host), "the end of the stream")
        wait_for(lambda: ink(self._desktop) > before + WORDS, "the last words in the editor")
        icon.wait_until_idle()
        self._stage.do("stop")
        self._microphone.pull_out()
        return wait_for(self._editor.saved_text, "the saved text")


def encode(folder, file):
    """Makes one moving picture of the pictures in a folder."""
    frames = [(name, round(seconds * 1000))
              for name, seconds in json.loads((folder / "frames.json").read_text())]
    arguments = ["img2webp", "-loop", "0", "-min_size", "-kmin", "0", "-kmax", "0", "-lossless",
                 "-m", "6"]
    for number, (name, milliseconds) in enumerate(frames):
        duration = (FIRST if number == 0 else LAST if number == len(frames) - 1
                    else max(milliseconds, 1))
        arguments += ["-d", str(duration), str(folder / name)]
    file.unlink(missing_ok=True)
    subprocess.run([*arguments, "-o", file], check=True, stdout=subprocess.DEVNULL)
    return len(frames)


def main():
    top = pathlib.Path(__file__).resolve().parents[2]
    binaries, file = (
        pathlib.Path(argument).resolve() for argument in
        (sys.argv[1:3] + [top / "build/default/bin", top / "docs/screenshots/dictation.webp"]
         [len(sys.argv) - 1:]))
    with Desktop(wm=True, a11y=True, audio=True, size="{}x{}".format(*SIZE)) as desktop:
        folder = desktop.folder / "frames"
        folder.mkdir()
        decorate(desktop)
        text = Film(desktop, binaries, folder).shoot()
        count = encode(folder, file)
    size = file.stat().st_size
    print(f"{file}: {count} pictures, {size} bytes\nArrived: {text}")
    if similarity(" ".join(SENTENCES), text) < MIN_SIMILARITY:
        sys.exit("That is not what was spoken.")
    if size >= MAX_BYTES:
        sys.exit("The file is too large.")


if __name__ == "__main__":
    main()
