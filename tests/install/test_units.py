#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""systemd understands the units, and the service of a team is shut in."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

UNITS = pathlib.Path(os.environ["TARVIK_UNITS"])
SOURCES = pathlib.Path(__file__).resolve().parents[2] / "packaging/linux/systemd"
# 0 is the best and 10 the worst.
MAX_EXPOSURE = 1.5


@unittest.skipUnless(shutil.which("systemd-analyze"), "there is no systemd-analyze here")
class Units(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)

    def unit(self, manager):
        """The unit, with a program that is installed."""
        text = (UNITS / manager / "tarvik-speech-service.service").read_text()
        unit = self.folder / "tarvik-speech-service.service"
        command = next(line for line in text.splitlines() if line.startswith("ExecStart="))
        program = command.removeprefix("ExecStart=").split()[0]
        self.assertTrue(program.endswith("/bin/tarvik-speech-service"), program)
        unit.write_text(text.replace(program, "/bin/true"))
        return unit

    def analyze(self, *arguments):
        result = subprocess.run(
            ["systemd-analyze", "--man=no", "--no-pager", *arguments], text=True, timeout=60,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            env={"PATH": os.environ["PATH"], "XDG_RUNTIME_DIR": str(self.folder)})
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def test_the_service_of_a_team_is_valid_and_shut_in(self):
        unit = self.unit("system")
        self.assertEqual(self.analyze("verify", unit), "")
        self.analyze("security", "--offline=yes", f"--threshold={10 * MAX_EXPOSURE:.0f}", unit)

    def test_the_service_of_a_user_is_valid(self):
        socket = self.folder / "tarvik-speech-service.socket"
        shutil.copy(SOURCES / "user" / socket.name, socket)
        self.assertEqual(self.analyze("--user", "verify", self.unit("user"), socket), "")


if __name__ == "__main__":
    unittest.main()
