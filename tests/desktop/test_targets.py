#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The corpus of the matrix in the programs of the matrix, once each. Without arguments these are the
programs of packages.txt. With --row NAME it is one row, and all ways of dictation."""

import sys
import unittest

from dictation_test import BINARIES
from matrix.page import reason
from matrix.run import Plan, is_typed_anyway, measure_row

ACCESSIBLE = ("GTK 3 entry", "GTK 3 text view", "GTK 3 password field", "GTK 4 entry",
              "GTK 4 text view", "Qt 6 line", "Qt 6 text area")


class Targets(unittest.TestCase):
    def check(self, name, columns, road=None):
        row = measure_row(name, Plan(columns, BINARIES, repetitions=1))
        if "missing" in row:
            self.skipTest(f"{row['missing']} is not installed")
        self.assertNotIn("error", row)
        needless = {"typed"} if is_typed_anyway(row["columns"]) else set()
        self.assertEqual(set(row["columns"]) | needless, set(columns) | needless)
        for column, outcome in row["columns"].items():
            with self.subTest(row=name, column=column):
                wrong = [text for text in outcome["wrong"] if not reason(name, column, text)]
                self.assertEqual((wrong, outcome["error"]), ([], None))
                # Every text that arrived before the end of the recording was entered this way.
                self.assertIn(road, (None, *outcome["roads"]))
                self.assertGreater(outcome["texts"], 0)


def add_test(name, *arguments):
    test = "test_" + name.lower().replace(" ", "_").replace(",", "")
    setattr(Targets, test, lambda self: self.check(name, *arguments))


def main():
    if "--row" in sys.argv:
        position = sys.argv.index("--row")
        name = sys.argv[position + 1]
        del sys.argv[position:position + 2]
        add_test(name, ("held", "toggle", "after", "typed"))
    else:
        for name in ACCESSIBLE:
            add_test(name, ("held",), "accessibility")
        add_test("xterm", ("held",), "typed keys")
    unittest.main()


if __name__ == "__main__":
    main()
