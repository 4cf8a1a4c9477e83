#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""tarvik-local-speech, with stand-ins for systemd, the session bus and the service."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "packaging/linux/tarvik-local-speech"
STAND_IN = """#!/bin/sh
echo "$(basename "$0") $*" >>"$TEST_CALLS"
case "$(basename "$0") $*" in
*GetConnectionUnixProcessID*) [ -n "$TEST_PROCESS" ] && echo "   uint32 $TEST_PROCESS" ;;
*is-system-running*) echo "$TEST_MANAGER" ;;
*--print-ca*) echo "/state of somebody/ca.pem" ;;
esac
exit 0
"""
LOCAL = ('deepgramApiKey=local\ndeepgramHost=127.0.0.1:8443\n'
         'deepgramAuthority="/state of somebody/ca.pem"\n')


class LocalSpeech(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        tools = self.folder / "bin"
        tools.mkdir()
        for name in ("dbus-send", "systemctl", "tarvik-speech-service"):
            (tools / name).write_text(STAND_IN)
            (tools / name).chmod(0o755)
        self.calls = self.folder / "calls"
        self.settings = self.folder / "Tarvik" / "Tarvik Dictate.conf"
        self.before = self.folder / "Tarvik" / "before-local-speech.conf"

    def call(self, *arguments, process="", manager="running", status=0):
        self.calls.write_text("")
        result = subprocess.run(
            ["sh", SCRIPT, *arguments], capture_output=True, text=True, timeout=60,
            env={"PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}", "HOME": str(self.folder),
                 "XDG_CONFIG_HOME": str(self.folder), "TEST_CALLS": str(self.calls),
                 "TEST_PROCESS": process, "TEST_MANAGER": manager})
        self.assertEqual(result.returncode, status, result.stderr)
        return result

    def write(self, text):
        self.settings.parent.mkdir(exist_ok=True)
        self.settings.write_text(text)

    def test_the_old_settings_come_back(self):
        for before in ("[General]\ndeepgramApiKey=mine\ndeepgramHost=a.example:1\nother=1\n",
                       "[General]\ndeepgramApiKey=mine\n",
                       "[General]\n",
                       "[Other]\ndeepgramHostile=1\n[General]\ndeepgramApiKey=a|b\\\\&c\n"):
            self.write(before)
            self.call("on")
            self.assertEqual(self.settings.read_text().count(LOCAL), 1, self.settings.read_text())
            self.assertNotIn("mine", self.settings.read_text())
            self.call("off")
            self.assertEqual(self.settings.read_text(), before)
            self.assertFalse(self.before.exists())

    def test_the_values_are_in_the_right_group(self):
        self.write("[Other]\nx=1\n[General]\ny=1\n[Last]\nz=1\n")
        self.call("on")
        self.assertEqual(self.settings.read_text(),
                         "[Other]\nx=1\n[General]\n" + LOCAL + "y=1\n[Last]\nz=1\n")

    def test_without_settings_they_begin_with_the_local_service(self):
        self.call("on")
        self.assertEqual(self.settings.read_text(), "[General]\n" + LOCAL)
        self.call("off")
        self.assertEqual(self.settings.read_text(), "[General]\n")

    def test_settings_without_a_group_get_one(self):
        for before in ("", "[Other]\nx=1\n"):
            self.write(before)
            self.call("on")
            self.assertEqual(self.settings.read_text(), before + "[General]\n" + LOCAL)
            self.call("off")

    def test_an_entry_with_blanks_is_replaced_and_comes_back(self):
        before = "[General]\n deepgramApiKey = mine\ndeepgramHost\t=a.example\n"
        self.write(before)
        self.call("on")
        self.assertEqual(self.settings.read_text(), "[General]\n" + LOCAL)
        self.call("off")
        self.assertEqual(self.settings.read_text(), before)

    def test_nobody_else_can_read_a_key(self):
        self.write("[General]\ndeepgramApiKey=mine\n")
        self.call("on")
        for path in (self.settings, self.before):
            self.assertEqual(path.stat().st_mode & 0o077, 0, path)

    def test_the_socket_is_opened_and_closed(self):
        self.call("on")
        self.assertIn("systemctl --user enable --quiet --now tarvik-speech-service.socket",
                      self.calls.read_text())
        self.call("off")
        self.assertIn("systemctl --user disable --quiet --now tarvik-speech-service.socket",
                      self.calls.read_text())

    def test_without_a_user_manager_the_user_is_told(self):
        result = self.call("on", manager="offline")
        self.assertIn("start tarvik-speech-service yourself", result.stderr)
        self.assertNotIn("enable", self.calls.read_text())

    def test_a_running_application_ends_first_and_starts_again(self):
        for where in ("on", "off"):
            with subprocess.Popen(["sleep", "60"]) as application:
                self.call(where, process=str(application.pid))
                self.assertEqual(application.wait(timeout=10), -15)
            self.assertIn("StartServiceByName string:com.tarvik.dictate", self.calls.read_text())

    def test_an_application_that_does_not_run_is_not_started(self):
        self.call("on")
        self.assertNotIn("StartServiceByName", self.calls.read_text())

    def test_a_switch_to_where_it_is_changes_nothing(self):
        self.write("[General]\ndeepgramApiKey=mine\n")
        self.call("off", status=1)
        self.assertEqual(self.settings.read_text(), "[General]\ndeepgramApiKey=mine\n")
        self.call("on")
        kept = self.before.read_text()
        self.call("on", status=1)
        self.assertEqual(self.before.read_text(), kept)

    def test_it_says_which_service_is_used(self):
        self.assertIn("not in use", self.call("status").stdout)
        self.call("on")
        self.assertIn("is in use", self.call("status").stdout)

    def test_what_is_no_command_is_refused(self):
        for arguments in ((), ("up",), ("on", "off"), ("--unknown",)):
            self.assertIn("usage:", self.call(*arguments, status=2).stderr)
        self.assertIn("usage:", self.call("--help").stdout)


if __name__ == "__main__":
    unittest.main()
