# SPDX-License-Identifier: MIT

"""Measures one row of the matrix on a private desktop of its own."""

import contextlib
import dataclasses
import datetime
import os
import pathlib
import subprocess
import time

from desktop import Desktop
from keyboard import Keyboard
from matrix import corpus
from matrix.columns import COLUMNS, Outcome
from matrix.dictation import Dictation
from matrix.registry import ROWS
from matrix.rows import Row
from microphone import Microphone


@dataclasses.dataclass
class Context:
    """What a column needs."""

    desktop: Desktop
    row: Row
    texts: dict
    dictation: Dictation = None
    # When the column in work shall come to its end.
    deadline: float = 0.0

    def is_over(self, outcome):
        """Whether a column ends before all of its repetitions."""
        return outcome.is_hopeless or time.monotonic() > self.deadline


def commit(root):
    def git(*arguments):
        return subprocess.run(["git", *arguments], cwd=root, capture_output=True, text=True,
                              check=True).stdout.strip()
    # The published page itself does not count as a change.
    changes = git("status", "--porcelain", "--", ":!docs/targets.md")
    return git("rev-parse", "--short", "HEAD") + (" with changes" if changes else "")


@dataclasses.dataclass
class Plan:
    """What to measure of each row."""

    columns: list
    binaries: pathlib.Path
    repetitions: int = 20
    other_repetitions: int = 2
    # Seconds after which a column begins no further repetition.
    time_limit: float = 60.0
    texts: dict = dataclasses.field(default_factory=corpus.read)


def progress(line):
    print(f"{datetime.datetime.now():%H:%M:%S}  {line}", flush=True)


def measure_row(name, plan):
    """Measures the columns of one row; returns the row's results."""
    row_class = ROWS[name]
    result = {"stamped": row_class.stamped, "paints": row_class.paints, "columns": {},
              "date": datetime.datetime.now().astimezone().isoformat(timespec="minutes"),
              "load": os.getloadavg()[0]}
    if missing := row_class.missing():
        result["missing"] = missing
        progress(f"{name}: {missing} is not installed")
        return result
    try:
        measure_program(name, row_class, plan, result["columns"])
    # A program that does not start must not cost the other rows. The page states the failure.
    except Exception as error:  # noqa: BLE001
        result["error"] = describe(error)
        progress(f"{name}: {result['error']}")
    return result


def measure_program(name, row_class, plan, results):
    with contextlib.ExitStack() as stack:
        desktop = stack.enter_context(Desktop(wm=True, a11y=True, audio=True))
        stack.callback(Microphone(desktop.fifo()).pull_out)
        row = row_class(desktop)
        stack.callback(row.close)
        context = Context(desktop, row, plan.texts)
        keyboard = Keyboard(desktop)
        wanted = [(key, column) for key, column in COLUMNS.items() if key in plan.columns]
        for is_ours, is_blind in ((True, False), (True, True), (False, False)):
            group = [(key, column) for key, column in wanted
                     if (column.is_ours, column.is_blind) == (is_ours, is_blind)]
            if not group:
                continue
            with contextlib.ExitStack() as part:
                if is_ours:
                    context.dictation = part.enter_context(
                        Dictation(desktop, keyboard, plan.binaries, row.clear, is_blind))
                for key, column in group:
                    results[key] = measure_column(name, column, context, plan)


def describe(error):
    return f"{type(error).__name__}: {error}".splitlines()[0]


def measure_column(name, column, context, plan):
    outcome = Outcome()
    begin = time.monotonic()
    context.deadline = begin + plan.time_limit
    repetitions = plan.repetitions if column.is_ours else plan.other_repetitions
    try:
        column.measure(context, repetitions, outcome)
    # A cell that fails must not cost the others. The page states the failure.
    except Exception as error:  # noqa: BLE001
        outcome.error = describe(error)
    progress(f"{name}, {column.title}: {outcome.texts - len(outcome.wrong)} of {outcome.texts} "
             f"right in {time.monotonic() - begin:.0f} s"
             + (f"; {outcome.error}" if outcome.error else ""))
    return outcome.values()
