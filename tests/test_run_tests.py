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


class RunTests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "CMakeLists.txt").write_text(PROJECT)
        subprocess.run(["cmake", "-S", self.folder, "-B", self.folder], check=True,
                       stdout=subprocess.DEVNULL)

    def run_tests(self, *arguments):
        ended = subprocess.run([RUN_TESTS, self.folder, "--test-dir", self.folder, *arguments],
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


if __name__ == "__main__":
    unittest.main()
