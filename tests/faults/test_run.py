#!/usr/bin/python3
# SPDX-License-Identifier: MIT

"""./run on Linux behind a proxy, with stand-ins for the build and the programs."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
STAND_INS = {
    "packaging/linux/install-packages": "exit 0",
    "bin/cmake": "exit 0",
    "build/default/bin/tarvik-speech-service":
        'mkdir -p "$4"; touch "$4/ca.pem"; echo "listening on wss://localhost:4711/v1/listen"; exec sleep 60',
    "build/default/bin/tarvik-dictate": 'echo "no_proxy=$no_proxy proxy=$https_proxy"',
}


class Run(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        shutil.copy(ROOT / "run", self.folder)
        for name, body in STAND_INS.items():
            path = self.folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(f"#!/bin/sh\n{body}\n")
            path.chmod(0o755)

    def start(self, **variables):
        """Runs ./run; returns what the application found in its environment."""
        environment = {"PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}", "HOME": str(self.folder),
                       "DISPLAY": ":0", "https_proxy": "http://proxy.example:3128"} | variables
        result = subprocess.run([self.folder / "run"], env=environment, capture_output=True, text=True,
                                timeout=60, check=True)
        return result.stdout.splitlines()[-1]

    def test_loopback_is_never_asked_for_through_a_proxy(self):
        self.assertEqual(self.start(),
                         "no_proxy=localhost,127.0.0.1,::1 proxy=http://proxy.example:3128")

    def test_the_users_own_exceptions_stay(self):
        for name in ("no_proxy", "NO_PROXY"):
            self.assertIn("no_proxy=localhost,127.0.0.1,::1,intranet.example ",
                          self.start(**{name: "intranet.example"}))


if __name__ == "__main__":
    unittest.main()
