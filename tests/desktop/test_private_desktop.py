#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The private desktop itself: its exit status, its isolation, and its clean-up."""

import contextlib
import os
import pathlib
import signal
import subprocess
import sys
import unittest

from desktop import wait_for
from reaper import MARK, processes_with_mark

WRAPPER = pathlib.Path(__file__).parent / "private-desktop"
HOSTILE = pathlib.Path(__file__).parents[1] / "hostile-environment"
EVERYTHING = ("--x11", "--wm", "--a11y", "--audio")


def run(command, *parts):
    return subprocess.run([WRAPPER, *parts, "--", "sh", "-c", command], capture_output=True,
                          text=True, timeout=30)


class PrivateDesktop(unittest.TestCase):
    def test_the_exit_status_is_the_command_s(self):
        self.assertEqual(run("exit 0").returncode, 0)
        self.assertEqual(run("exit 7").returncode, 7)
        self.assertEqual(run("kill -ABRT $$").returncode, 128 + signal.SIGABRT)

    def test_every_part_is_there_when_the_command_starts(self):
        result = run(
            "xdotool getmouselocation && xprop -root _NET_SUPPORTING_WM_CHECK && "
            "pactl get-default-source && dbus-send --session --print-reply --dest=org.a11y.Bus "
            "/org/a11y/bus org.freedesktop.DBus.Properties.Get string:org.a11y.Status "
            "string:IsEnabled", *EVERYTHING)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("window id", result.stdout)
        self.assertIn("vmic", result.stdout)
        self.assertIn("boolean true", result.stdout)

    def test_nothing_of_the_user_s_session_is_seen(self):
        os.environ["TARVIK_TEST_SECRET"] = "visible"
        self.addCleanup(os.environ.pop, "TARVIK_TEST_SECRET")
        variables = dict(line.partition("=")[::2] for line in run("env").stdout.splitlines())
        self.assertNotIn("TARVIK_TEST_SECRET", variables)
        self.assertNotIn("DISPLAY", variables)
        for name in ("HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"):
            self.assertTrue(variables[name].startswith(variables[MARK]), variables[name])

    def test_nothing_of_a_user_who_has_set_everything_is_seen(self):
        result = subprocess.run([HOSTILE, WRAPPER, *EVERYTHING, "--", "env"], capture_output=True,
                                text=True, timeout=60)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn(MARK, result.stdout)
        self.assertNotIn("nonsense", result.stdout)

    def test_the_x_server_of_another_network_is_another_one(self):
        script = ("import os, network; from desktop import Desktop; network.enter()\n"
                  "with Desktop() as desktop:\n"
                  "    socket = os.stat('/tmp/.X11-unix/X' + desktop.environment['DISPLAY'][1:])\n"
                  "    print(desktop.environment['DISPLAY'], socket.st_dev, socket.st_ino)\n"
                  "    input()")
        other = subprocess.Popen([sys.executable, "-B", "-c", script], stdin=subprocess.PIPE,
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                 cwd=WRAPPER.parent)
        self.addCleanup(other.communicate, "\n")
        answer = other.stdout.readline()
        if not answer and "PermissionError" in (errors := other.stderr.read()):
            self.skipTest(f"a network of its own is not allowed here: {errors}")
        display, device, inode = answer.split()
        with contextlib.suppress(FileNotFoundError):
            here = os.stat(f"/tmp/.X11-unix/X{display[1:]}")
            self.assertNotEqual((here.st_dev, here.st_ino), (int(device), int(inode)))

    def start_and_interrupt(self, interrupt):
        process = subprocess.Popen(
            [WRAPPER, *EVERYTHING, "--", "sh", "-c", f"echo ${MARK}; sleep 60 & sleep 60"],
            stdout=subprocess.PIPE, text=True)
        with process.stdout:
            folder = process.stdout.readline().strip()
        self.assertGreater(len(list(self.remaining_processes(folder))), 5)
        process.send_signal(interrupt)
        process.wait()
        wait_for(lambda: not os.path.exists(folder), "the end of the desktop")
        self.assertEqual(list(self.remaining_processes(folder)), [])
        return process.returncode

    def remaining_processes(self, folder):
        return processes_with_mark(f"{MARK}={folder}".encode())

    def test_nothing_is_left_when_it_is_ended(self):
        self.assertEqual(self.start_and_interrupt(signal.SIGTERM), 128 + signal.SIGTERM)

    def test_nothing_is_left_when_it_is_killed(self):
        self.assertEqual(self.start_and_interrupt(signal.SIGKILL), -signal.SIGKILL)


if __name__ == "__main__":
    unittest.main()
