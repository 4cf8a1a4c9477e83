#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What a run of the tests says at its end."""

import os
import pathlib
import subprocess
import tempfile
import unittest

RUN_TESTS = pathlib.Path(__file__).parent.parent / "tools/run-tests"

PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(example NONE)
enable_testing()
add_test(NAME good COMMAND sh -c "echo all is well")
add_test(NAME gtest COMMAND sh -c "printf '[ RUN      ] A.B\\n[       OK ] A.B\\nA.cpp:7: Failure\\nValue of: x\\n'; exit 1")
add_test(NAME silent COMMAND sh -c "echo last words; exit 3")
"""

# Fails in each run whose number is in the list.
UNSTABLE = """
add_test(NAME "un-stable.A/1 [x] (y)+#&~" COMMAND sh -c "echo run >>runs; ! grep -qx $(wc -l <runs) fails")
"""


class RunTests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.configure(PROJECT)

    def configure(self, project):
        (self.folder / "CMakeLists.txt").write_text(project)
        subprocess.run(["cmake", "-S", self.folder, "-B", self.folder], check=True,
                       stdout=subprocess.DEVNULL)

    def run_tests(self, *arguments, again=0):
        ended = subprocess.run([RUN_TESTS, "--again", str(again), self.folder,
                                "--test-dir", self.folder, *arguments],
                               capture_output=True, text=True, check=False,
                               env={"PATH": os.environ["PATH"]})
        return ended.returncode, ended.stdout

    def test_it_ends_with_what_failed_tests_said_from_their_failures_on(self):
        status, output = self.run_tests()
        self.assertEqual(status, 8)
        self.assertTrue(output.endswith("== gtest\nA.cpp:7: Failure\nValue of: x\n"
                                        "== silent\nlast words\n"), output)

    def test_a_run_without_failures_says_nothing_more(self):
        self.run_tests()
        status, output = self.run_tests("-R", "good")
        self.assertEqual(status, 0)
        self.assertNotIn("==", output)
        self.assertNotIn("words", output)

    def run_again(self, fails):
        """Runs only good tests and the unstable one, which fails in these of its runs."""
        self.configure(PROJECT + UNSTABLE)
        (self.folder / "fails").write_text("".join(f"{number}\n" for number in fails))
        status, output = self.run_tests("-R", "good|un-stable", again=3)
        runs = (self.folder / "runs").read_text().count("run")
        return status, output, runs

    def test_a_failure_is_an_error_unless_it_is_to_be_tried_again(self):
        self.configure(PROJECT + UNSTABLE)
        (self.folder / "fails").write_text("1\n")
        self.assertEqual(self.run_tests("-R", "un-stable")[0], 8)

    def test_a_test_that_then_passes_alone_each_time_is_named(self):
        status, output, runs = self.run_again([1])
        self.assertEqual((status, runs), (0, 4), output)
        self.assertTrue(output.endswith(
            "UNSTABLE: un-stable.A/1 [x] (y)+#&~ failed beside the other tests, and passed 3 times alone.\n"), output)

    def test_a_test_that_fails_alone_once_has_failed(self):
        for fails, runs in (([1, 2], 2), ([1, 4], 4)):
            with self.subTest(fails=fails):
                (self.folder / "runs").unlink(missing_ok=True)
                status, output, count = self.run_again(fails)
                self.assertEqual((status, count), (8, runs), output)
                self.assertNotIn("UNSTABLE", output)

    def test_many_failures_are_not_tried_again(self):
        self.configure(PROJECT + UNSTABLE + "".join(
            f"add_test(NAME bad{number} COMMAND false)\n" for number in range(3)))
        (self.folder / "fails").write_text("1\n")
        status, output = self.run_tests("-R", "bad|un-stable", again=3)
        self.assertEqual(status, 8)
        self.assertEqual((self.folder / "runs").read_text(), "run\n")
        self.assertNotIn("UNSTABLE", output)


if __name__ == "__main__":
    unittest.main()
