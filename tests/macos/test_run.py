# SPDX-License-Identifier: MIT

"""./run on macOS, with stand-ins for the tools of the system that note how they were called."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOLS = ["uname", "cmake", "pkill", "pgrep", "defaults", "open"]
OPEN = "open -n -W build/macos/Tarvik Dictate.app"
# A program that runs is there for one more look after it was told to end.
STAND_IN = """#!/bin/sh
echo "$(basename "$0") $*" >>"$TEST_CALLS"
case $(basename "$0") in
uname) echo Darwin ;;
pkill) [ -n "$TEST_RUNS" ] ;;
pgrep) [ "$(grep -c ^pgrep "$TEST_CALLS")" = 1 ] ;;
defaults) [ -n "$TEST_CONFIGURED" ] ;;
esac
"""


class Run(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        shutil.copy(ROOT / "run", self.folder)
        install = self.folder / "packaging/macos/install-packages"
        for tool in [*(self.folder / "bin" / tool for tool in TOOLS), install]:
            tool.parent.mkdir(parents=True, exist_ok=True)
            tool.write_text(STAND_IN)
            tool.chmod(0o755)

    def start(self, runs="", configured=""):
        calls = self.folder / "calls"
        calls.write_text("")
        environment = {"PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}", "TEST_CALLS": str(calls),
                       "TEST_RUNS": runs, "TEST_CONFIGURED": configured}
        result = subprocess.run([self.folder / "run"], env=environment, capture_output=True, text=True,
                                timeout=60)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout, calls.read_text().splitlines()

    def test_it_builds_and_opens_a_new_instance_and_waits_for_it(self):
        _, calls = self.start()
        self.assertEqual([call.split()[0] for call in calls],
                         ["uname", "install-packages", "cmake", "cmake", "pkill", "defaults", "open"])
        self.assertEqual(calls[-1], OPEN)

    def test_the_one_that_runs_has_ended_before_the_next_is_opened(self):
        _, calls = self.start(runs="yes")
        self.assertEqual([call.split()[0] for call in calls[-5:]],
                         ["pkill", "pgrep", "pgrep", "defaults", "open"])
        self.assertTrue(calls[-5].endswith("-x tarvik-dictate"))

    def test_the_first_start_says_how_its_login_item_is_undone(self):
        self.assertIn("start at login", self.start()[0])
        self.assertNotIn("start at login", self.start(configured="yes")[0])


if __name__ == "__main__":
    unittest.main()
