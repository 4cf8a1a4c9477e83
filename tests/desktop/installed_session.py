# SPDX-License-Identifier: MIT

"""A user's session in which the packages are installed, and what the user does there."""

import os
import pathlib
import shutil
import signal

import reaper
from demonstrate import EDITOR, Editor, is_streaming
from desktop import wait_for
from keyboard import Keyboard
from microphone import Microphone
from similarity import MIN_SIMILARITY, similarity, words
from windows import wait_for_window

NAME = "com.tarvik.dictate"
READY = "hold-to-talk registered"
SERVICE = "127.0.0.1:8443"
STOPPED = "TarvikDictate: audio.stop"
SENTENCE = "the quick brown fox jumps over the lazy dog"
RECOGNITION_TIMEOUT = 60.0


class InstalledSession:
    """The session bus starts the application, and the socket of the local service is open."""

    def __init__(self, desktop):
        self._desktop = desktop
        config = pathlib.Path(desktop.environment["XDG_CONFIG_HOME"])
        self.settings = config / "Tarvik" / "Tarvik Dictate.conf"
        self._starts = 0
        # A private session bus knows few services until it is told of more.
        shutil.copy(f"/usr/share/dbus-1/services/{NAME}.service", desktop.folder / "services")
        self._call_bus("ReloadConfig")
        # systemd opens the socket in a session of its own. Here a small program does, which hands on
        # the named variables only.
        desktop.spawn(["systemd-socket-activate", "--listen=" + SERVICE,
                       "--setenv=XDG_STATE_HOME", "--setenv=" + reaper.MARK,
                       "/usr/bin/tarvik-speech-service"])

    def _call_bus(self, member, *arguments):
        return self._desktop.run(
            ["dbus-send", "--session", "--print-reply=literal", "--dest=org.freedesktop.DBus", "/",
             "org.freedesktop.DBus." + member, *arguments], check=False)

    @property
    def process(self):
        """The process of the application; nothing where none runs."""
        reply = self._call_bus("GetConnectionUnixProcessID", "string:" + NAME).split()
        return int(reply[-1]) if reply else None

    def start(self):
        self._call_bus("StartServiceByName", "string:" + NAME, "uint32:0")
        self.wait_until_ready()

    def wait_until_ready(self):
        """Waits until one more start is complete; closes the setup window, which comes up by itself."""
        self._starts += 1
        wait_for(lambda: self._desktop.services_log().count(READY) >= self._starts,
                 "the hotkeys of the started application")
        wait_for_window(self._desktop).close()

    def switch(self, where):
        """Switches the running application over to the local service, or back."""
        before = self.process
        print(self._desktop.run(["tarvik-local-speech", where]).strip(), flush=True)
        self.wait_until_ready()
        assert self.process not in (None, before), "the application was not started anew"

    def end(self):
        process = self.process
        os.kill(process, signal.SIGTERM)
        wait_for(lambda: not pathlib.Path(f"/proc/{process}/exe").exists(), "the application's end")

    def own_settings(self):
        """The settings that the user or the switch has made."""
        return [line for line in self.settings.read_text().splitlines()
                if line.startswith("deepgram")]

    def dictate(self):
        """Speaks a sentence into an editor, which has to save what was spoken."""
        desktop = self._desktop
        keyboard, microphone = Keyboard(desktop), Microphone(desktop.fifo())
        editor = Editor(desktop, EDITOR, "mousepad")
        stops = desktop.services_log().count(STOPPED)
        keyboard.hold()
        wait_for(desktop.is_microphone_open, "an open microphone", RECOGNITION_TIMEOUT)
        microphone.speak(SENTENCE)
        microphone.wait_until_silent()
        keyboard.release()
        wait_for(lambda: desktop.services_log().count(STOPPED) > stops, "the end of the recording")
        wait_for(lambda: not is_streaming(SERVICE), "the end of the stream", RECOGNITION_TIMEOUT)
        try:
            wait_for(lambda: words(editor.saved_text())[-1:] == words(SENTENCE)[-1:], "the last word",
                     RECOGNITION_TIMEOUT)
        except TimeoutError:
            print(f"Arrived: {editor.saved_text()}", desktop.services_log(), sep="\n", flush=True)
            raise
        microphone.pull_out()
        text = editor.saved_text()
        print(f"Spoken: {SENTENCE}\nArrived: {text}", flush=True)
        assert similarity(SENTENCE, text) >= MIN_SIMILARITY, "that is not what was spoken"
