#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""./run on Linux, with stand-ins for the build, the session bus and the two programs."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
RUNS = "Tarvik Dictate is running"
APPLICATION = """#!/bin/sh
echo "started no_proxy=$no_proxy proxy=$https_proxy" >>"$TEST_CALLS"
cp "$XDG_CONFIG_HOME/Tarvik/Tarvik Dictate.conf" "$TEST_CALLS.settings"
echo "$TEST_LOG" >&2
exit "$TEST_STATUS"
"""
SERVICE = """#!/bin/sh
echo "listening on wss://localhost:4711/v1/listen"
exec sleep 60
"""
# The session bus knows the process of the instance that runs, the compositor, where there is one, and the
# version of the portal's global shortcuts.
BUS = """#!/bin/sh
case "$*" in
*org.freedesktop.portal.GlobalShortcuts*version*) echo "   variant       uint32 $TEST_PORTAL" ;;
*"NameHasOwner string:$TEST_COMPOSITOR") echo "   boolean true" ;;
*NameHasOwner*) echo "   boolean false" ;;
*) [ -n "$TEST_INSTANCE" ] && echo "   uint32 $TEST_INSTANCE" ;;
esac
"""
BUILD = """#!/bin/sh
echo "$(basename "$0")" >>"$TEST_CALLS"
"""


class Run(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        shutil.copy(ROOT / "run", self.folder)
        for path, text in (("bin/cmake", BUILD), ("packaging/linux/install-packages", BUILD),
                           ("bin/dbus-send", BUS),
                           ("build/default/bin/tarvik-dictate", APPLICATION),
                           ("build/default/bin/tarvik-speech-service", SERVICE)):
            program = self.folder / path
            program.parent.mkdir(parents=True, exist_ok=True)
            program.write_text(text)
            program.chmod(0o755)
        self.calls = self.folder / "calls"
        self.settings = self.folder / "config/Tarvik/Tarvik Dictate.conf"

    def start(self, *arguments, log="TarvikDictate: hold-to-talk registered", status=0, **variables):
        self.calls.write_text("")
        return subprocess.run(
            [self.folder / "run", *arguments], capture_output=True, text=True, timeout=60,
            env={"PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}", "HOME": str(self.folder),
                 "XDG_CONFIG_HOME": str(self.folder / "config"), "DISPLAY": ":1",
                 "TEST_CALLS": str(self.calls), "TEST_LOG": log, "TEST_STATUS": str(status),
                 "TEST_INSTANCE": "", "TEST_COMPOSITOR": "none", "TEST_PORTAL": "0"} | variables)

    def seen_settings(self):
        """The settings that the application found."""
        return (self.folder / "calls.settings").read_text()

    def test_it_says_that_it_runs_once_the_hotkeys_work(self):
        for arguments in ([], ["--deepgram"]):
            result = self.start(*arguments)
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertEqual(result.stdout.count(RUNS), 1, result.stdout)
            self.assertIn("hold-to-talk registered", result.stderr)

    def test_it_does_not_say_that_it_runs_when_it_does_not(self):
        for arguments in ([], ["--deepgram"]):
            result = self.start(*arguments, log="could not connect to display", status=1)
            self.assertEqual(result.returncode, 1)
            self.assertNotIn(RUNS, result.stdout)

    def test_a_missing_hotkey_is_told(self):
        result = self.start(log="TarvikDictate: hold register failed: -9878")
        self.assertNotIn(RUNS, result.stdout)
        self.assertIn("without its hotkey", result.stdout)

    def test_the_one_that_runs_is_ended_before_the_next_starts(self):
        with subprocess.Popen(["sleep", "60"]) as earlier:
            self.start(TEST_INSTANCE=str(earlier.pid))
            self.assertEqual(earlier.wait(timeout=10), -15)
        self.assertIn("started", self.calls.read_text())

    def test_a_checkout_is_not_started_at_login_unasked(self):
        self.start()
        self.assertIn("loginItemAutoConfigured=true", self.seen_settings())

    def test_the_users_own_settings_are_as_before(self):
        self.settings.parent.mkdir(parents=True)
        before = "[General]\ndeepgramApiKey=mine\n"
        self.settings.write_text(before)
        self.start("--deepgram")
        self.assertIn("loginItemAutoConfigured=true", self.seen_settings())
        self.assertEqual(self.settings.read_text(), before)

    def test_a_registered_application_stays_so(self):
        self.settings.parent.mkdir(parents=True)
        before = "[General]\nloginItemAutoConfigured=true\n"
        self.settings.write_text(before)
        self.start("--deepgram")
        self.assertEqual(self.settings.read_text(), before)

    def test_the_local_service_is_in_the_settings_once(self):
        for _ in range(2):
            self.start()
        settings = self.seen_settings()
        self.assertEqual(settings.count("deepgramHost=localhost:4711"), 1, settings)
        self.assertEqual(settings.count("deepgramAuthority="), 1, settings)

    def test_loopback_is_never_asked_for_through_a_proxy(self):
        self.start(https_proxy="http://proxy.example:3128")
        self.assertIn("started no_proxy=localhost,127.0.0.1,::1 proxy=http://proxy.example:3128\n",
                      self.calls.read_text())

    def test_the_users_own_exceptions_from_the_proxy_stay(self):
        for name in ("no_proxy", "NO_PROXY"):
            self.start(**{name: "intranet.example"})
            self.assertIn("no_proxy=localhost,127.0.0.1,::1,intranet.example ", self.calls.read_text())

    def test_a_wayland_session_that_cannot_be_served_is_told_before_the_build(self):
        result = self.start(WAYLAND_DISPLAY="wayland-0")
        self.assertEqual(result.returncode, 1)
        self.assertIn("Wayland", result.stderr)
        self.assertEqual(self.calls.read_text(), "")

    def test_a_wayland_session_that_can_be_served_is_served(self):
        for variables in ({"SWAYSOCK": "/s"}, {"TEST_COMPOSITOR": "org.kde.KWin"},
                          {"TEST_COMPOSITOR": "org.gnome.Shell"}, {"TEST_PORTAL": "1"}):
            result = self.start(WAYLAND_DISPLAY="wayland-0", **variables)
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn(RUNS, result.stdout)

    def test_a_compositor_with_bindings_of_its_own_is_served(self):
        for desktop in ("labwc:wlroots", "Hyprland", "river"):
            result = self.start(WAYLAND_DISPLAY="wayland-0", XDG_CURRENT_DESKTOP=desktop,
                                log="TarvikDictate: hold register failed: -9878")
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertIn("docs/using.md tells how to bind a key", result.stdout)
            self.assertIn("started", self.calls.read_text())


if __name__ == "__main__":
    unittest.main()
