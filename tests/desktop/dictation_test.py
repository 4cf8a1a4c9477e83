# SPDX-License-Identifier: MIT

"""The base class of the end-to-end tests, each with a private desktop and the real application."""

import os
import pathlib
import unittest

from application import READY, VERSION, Application, write_settings
from desktop import Desktop, wait_for
from keyboard import Keyboard
from local_service import LocalService
from microphone import Microphone
from scripted_service import ScriptedService, make_certificate
from similarity import MIN_SIMILARITY, similarity, words
from target import TerminalTarget, WidgetTarget
from tray import Tray
from windows import wait_for_window

BINARIES = pathlib.Path(os.environ.get(
    "TARVIK_BINARIES", pathlib.Path(__file__).parents[2] / "build/default/bin"))
RECOGNITION_TIMEOUT = 20.0


class DictationTest(unittest.TestCase):
    """One desktop per class, with keyboard, microphone and tray. Tests start everything else."""

    @staticmethod
    def make_desktop():
        return Desktop(wm=True, a11y=True, audio=True)

    @classmethod
    def make_keyboard(cls):
        return Keyboard(cls.desktop)

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.enterClassContext(cls.make_desktop())
        cls.keyboard = cls.make_keyboard()
        cls.microphone = Microphone(cls.desktop.fifo())
        cls.addClassCleanup(cls.microphone.pull_out)
        cls.tray = Tray(cls.desktop)
        cls.addClassCleanup(cls.tray.close)

    def start_scripted_service(self, name="localhost"):
        """Starts a service that sends what the test tells it to. The application trusts its
        certificate, which is for `name`."""
        key, certificate = make_certificate(self.desktop.folder / "certificates", name)
        service = ScriptedService(key, certificate)
        service.authority = certificate
        self.addCleanup(service.close)
        return service

    def start_local_service(self):
        """Starts the project's own service, which recognises real speech."""
        service = LocalService(self.desktop, BINARIES)
        self.addCleanup(lambda: self.assertEqual(service.close(), 0))
        return service

    def start_application(self, service=None, settings=None, environment=None,
                          closes_setup=True, ready=READY):
        """Starts the application with an API key and `service`, and waits for the log lines of
        `ready`. Closes the setup window that appears by itself, unless `closes_setup` is false. The
        application must exit cleanly in the end."""
        values = {"deepgramApiKey": "a-key", "lastWelcomeShownForVersion": VERSION}
        variables = {}
        if service is not None:
            values["deepgramHost"] = service.host
            variables["SSL_CERT_FILE"] = str(service.authority)
        self.settings_file = write_settings(self.desktop.environment, values | (settings or {}))
        application = Application(self.desktop, BINARIES, variables | (environment or {}), ready)
        self.addCleanup(self.end_application, application)
        if closes_setup:
            wait_for_window(self.desktop).close()
        return application

    def end_application(self, application):
        status = application.close()
        if status != 0 or self.has_failed():
            print(f"The application's log in {self.id()}:", *application.log.lines, sep="\n  ")
            # Without the application the hotkey opens the window manager's menu. The open menu would
            # take all keys of the next test.
            self.keyboard.press("Escape")
        self.assertEqual(status, 0, "exit status of the application")

    def run(self, result=None):
        self._result = result
        return super().run(result)

    def has_failed(self):
        return any(test is self for test, _ in self._result.errors + self._result.failures)

    def start_target(self, toolkit="gtk3", **options):
        target = WidgetTarget(self.desktop, toolkit, **options)
        self.addCleanup(target.close)
        return target

    def start_terminal(self, **options):
        target = TerminalTarget(self.desktop, **options)
        self.addCleanup(target.close)
        return target

    def hold(self):
        """Presses the hotkey; releases it at the end of the test at the latest."""
        self.addCleanup(self.keyboard.release)
        self.keyboard.hold()

    def dictate(self, service, *pieces):
        """Presses the hotkey and has the service send the pieces; returns the connection."""
        number = len(service.streams) + 1
        self.hold()
        stream = service.stream(number)
        for piece in pieces:
            stream.say(piece)
        return stream

    def wait_until_listening(self):
        """Waits until the microphone is open: earlier speech is not recorded."""
        wait_for(self.desktop.is_microphone_open, "an open microphone")

    def wait_until_heard(self, target, *sentences):
        """Waits until the target has the sentences to their end, nearly word for word."""
        spoken = " ".join(sentences)
        try:
            wait_for(lambda: words(target.text)[-1:] == words(spoken)[-1:]
                     and similarity(spoken, target.text) >= MIN_SIMILARITY,
                     f"the words “{spoken}”", RECOGNITION_TIMEOUT)
        except TimeoutError as error:
            raise AssertionError(f"{error}; there is {target.text!r}") from None
