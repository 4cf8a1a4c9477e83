#!/usr/bin/python3
# SPDX-License-Identifier: MIT

"""Runs the fault matrix.

usage: run_cells.py [--fast | --slow | --page] [GROUP ...]

A group is one of the modules cells_*.py. --fast and --slow choose the cells that every run of the tests
has, and the others; --page writes the table of docs/reliability.md instead. TARVIK_BINARIES names the
folder of the executables. With -k after the groups, only cells whose test has this name.
"""

import argparse
import importlib
import pathlib
import sys
import unittest

FOLDER = pathlib.Path(__file__).parent
sys.path[:0] = [str(FOLDER), str(FOLDER.parent / "desktop"), str(FOLDER.parents[1] / "bench")]

PAGE = FOLDER.parents[1] / "docs/reliability.md"
MARK = "<!-- Everything below is written by tests/faults/run_cells.py --page. -->"
# In characters.
MAX_TEXT = 40
GROUPS = sorted(path.stem.removeprefix("cells_") for path in FOLDER.glob("cells_*.py"))


def shortened(text):
    return text if len(text) <= MAX_TEXT else text[:MAX_TEXT - 1] + "…"


def row(cell):
    """The row of a cell in Markdown."""
    name = cell.name + (f" ({', '.join(cell.parts)})" if cell.parts else "")
    log = "<br>".join(part.strip() for part in cell.log).replace("|", "\\|")
    text = shortened(cell.text) if cell.opens or cell.text != "One" else ""
    return f"| {name} | {log or 'none'} | {text or 'none'} | {'yes' if cell.is_fast else ''} |"


def write_page():
    """Replaces everything in the page after the mark."""
    count, lines = 0, []
    for group in GROUPS:
        cells = importlib.import_module(f"cells_{group}").CELLS
        count += len(cells)
        lines += ["", f"### {group.capitalize()}", "",
                  "| What goes wrong | Lines in the log | Text | In `./test` |", "|---|---|---|---|",
                  *map(row, cells)]
    fast = sum(line.endswith("| yes |") for line in lines)
    before = PAGE.read_text(encoding="utf-8").partition(MARK)[0]
    PAGE.write_text("\n".join([before + MARK, "", f"{count} cells, {fast} of them in `./test`.", *lines])
                    + "\n", encoding="utf-8")


def tests_of(group, is_wanted, name):
    module = importlib.import_module(f"cells_{group}")
    (test,) = [value for value in vars(module).values()
               if isinstance(value, type) and issubclass(value, unittest.TestCase)
               and value.__module__ == module.__name__]
    wanted = {cell.name for cell in module.CELLS if is_wanted(cell)}
    for method in unittest.defaultTestLoader.getTestCaseNames(test):
        case = test(method)
        if case.cell_name() in wanted and (name is None or name in method):
            yield case


class PromptResult(unittest.TextTestResult):
    """Prints a failure when it happens, and not at the end of all tests."""

    def addFailure(self, test, error):
        super().addFailure(test, error)
        self.stream.writeln(self.failures[-1][1])

    def addError(self, test, error):
        super().addError(test, error)
        self.stream.writeln(self.errors[-1][1])

    def printErrors(self):
        pass


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--fast", action="store_true")
    parser.add_argument("--slow", action="store_true")
    parser.add_argument("--page", action="store_true")
    parser.add_argument("-k", dest="name")
    parser.add_argument("groups", nargs="*", metavar="GROUP")
    options = parser.parse_args()
    groups = options.groups or GROUPS
    if options.page:
        write_page()
        return 0

    def is_wanted(cell):
        return (options.fast and cell.is_fast) or (options.slow and not cell.is_fast) or (
            not options.fast and not options.slow)
    suite = unittest.TestSuite(
        test for group in groups for test in tests_of(group, is_wanted, options.name))
    result = unittest.TextTestRunner(verbosity=2, resultclass=PromptResult).run(suite)
    return 0 if result.wasSuccessful() and result.testsRun else 1


if __name__ == "__main__":
    sys.exit(main())
