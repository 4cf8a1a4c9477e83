# SPDX-License-Identifier: MIT

"""Brings up every window of the real application in the way that a user gets it."""

import contextlib
import pathlib
import time

from application import READY, VERSION, Application, write_settings
from bus import Bus
from desktop import wait_for
from keyboard import Keyboard
from microphone import Microphone
from scripted_service import ScriptedService, make_certificate
from setup_window import NOT_GRANTED, SetupWindow, has_status_color, pixels_per_unit
from windows import wait_for_window

MIN_SIZE = (830, 555)
# The total dictation times, in seconds, at which a call to action appears.
TEN_MINUTES, AN_HOUR = 600, 3600
MICROPHONE_DENIED = "TarvikDictate: mic status 2 "


class WindowScenarios:
    """A context manager. Needs a desktop with a window manager, accessibility and sound."""

    def __init__(self, desktop, binaries, environment=None, scale=1):
        self._desktop, self._binaries = desktop, binaries
        self._environment = environment or {}
        self._scale = scale
        self.keyboard = Keyboard(desktop)
        key, self._authority = make_certificate(desktop.folder / "certificates")
        self._service = ScriptedService(key, self._authority)
        self._microphone = Microphone(desktop.fifo())

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._microphone.pull_out()
        self._service.close()

    @contextlib.contextmanager
    def _application(self, ready=READY, **settings):
        write_settings(self._desktop.environment,
                       {"deepgramHost": self._service.host, "lastWelcomeShownForVersion": VERSION}
                       | settings)
        application = Application(
            self._desktop, self._binaries,
            {"SSL_CERT_FILE": str(self._authority)} | self._environment, ready)
        try:
            yield
        except BaseException:
            print("The application's log:", *application.log.lines, sep="\n  ")
            raise
        finally:
            application.close()

    @contextlib.contextmanager
    def setup(self, key="a-key"):
        """The setup window with everything granted, and with the keyboard."""
        with self._application(deepgramApiKey=key), \
             contextlib.closing(SetupWindow(self._desktop, self.keyboard)) as setup:
            setup.window.activate()
            yield setup

    def shrink(self, setup):
        """Gives the setup window its minimum size."""
        self._desktop.run(["xdotool", "windowsize", setup.window.number, "300", "200"])
        width, height = (side * self._scale for side in MIN_SIZE)
        wait_for(lambda: f"Geometry: {width}x{height}\n" in self._desktop.run(
            ["xdotool", "getwindowgeometry", setup.window.number]), "the smallest window")

    @contextlib.contextmanager
    def setup_with_nothing_granted(self):
        """The setup window without a key, a microphone and accessibility."""
        self._microphone.pull_out()
        self._desktop.run(["pactl", "unload-module", "module-pipe-source"])
        # As if the user had switched the login item off after an earlier launch.
        entry = (pathlib.Path(self._desktop.environment["XDG_CONFIG_HOME"])
                 / "autostart/com.tarvik.dictate.desktop")
        entry.unlink(missing_ok=True)
        with self._application((MICROPHONE_DENIED, READY[1]), loginItemAutoConfigured="true"), \
             contextlib.closing(SetupWindow(self._desktop, self.keyboard)) as setup:
            factor = pixels_per_unit(self._desktop, setup.window, setup.content)
            place = [round(side * factor) for side in setup.row("Accessibility")[1].extents]
            self._set_accessibility(False)
            # Without accessibility only the pixels show the state of the window.
            wait_for(lambda: has_status_color(self._desktop, place, NOT_GRANTED), "a red status")
            yield setup
        self._set_accessibility(True)
        self._desktop.plug_microphone()
        self._microphone.plug_in()

    def _set_accessibility(self, enabled):
        bus = Bus(self._desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        bus.set("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status", "IsEnabled", "b", enabled)
        bus.close()

    @contextlib.contextmanager
    def prompt(self):
        """The prompt for the API key."""
        with self._application():
            wait_for_window(self._desktop).close()
            self.keyboard.hold()
            prompt = wait_for_window(self._desktop).wait_until_active()
            self.keyboard.release()
            yield prompt
            self.keyboard.press("Escape")
            prompt.wait_until_gone()

    @contextlib.contextmanager
    def call_to_action(self, total):
        """The call to action at `total` seconds of dictation."""
        with self._application(deepgramApiKey="a-key", totalDictationSeconds=total - 1):
            wait_for_window(self._desktop).close()
            with self._recording():
                begin = time.monotonic()
                wait_for(lambda: time.monotonic() > begin + 1.1, "a second of usage")
            yield wait_for_window(self._desktop)

    @contextlib.contextmanager
    def dictation(self):
        """The application without a window. Yields a context manager that records while it is
        entered."""
        with self._application(deepgramApiKey="a-key"):
            wait_for_window(self._desktop).close()
            yield self._recording

    @contextlib.contextmanager
    def _recording(self):
        number = len(self._service.streams) + 1
        self.keyboard.toggle()
        self._service.stream(number)
        yield
        self.keyboard.toggle()
