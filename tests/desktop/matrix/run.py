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
class Plan:
    """What to measure of each row."""

    columns: list
    binaries: pathlib.Path
    # How often each short text, each long one, and each text of a slow column is entered in all.
    repetitions: int = 20
    long_repetitions: int = 3
    slow_repetitions: int = 2
    # Seconds after which a column begins no further repetition.
    time_limit: float = 60.0
    # When no column begins any more, on the clock of time.time().
    end: float = float("inf")
    texts: dict = dataclasses.field(default_factory=corpus.read)

    def repetitions_of(self, column):
        return self.slow_repetitions if column.is_slow else self.repetitions

    def lacks(self, row_class, earlier):
        """Whether a row has a column to measure. `earlier` are the row's results so far."""
        return not row_class.missing() and any(
            not is_complete(earlier.get("columns", {}), key, self) for key in self.columns)


@dataclasses.dataclass
class Context:
    """What a column needs."""

    desktop: Desktop
    row: Row
    plan: Plan
    dictation: Dictation = None
    # When the column in work shall come to its end.
    deadline: float = 0.0

    def is_over(self, outcome):
        """Whether a column ends before all of its repetitions."""
        return outcome.is_hopeless or time.monotonic() > self.deadline

    def next_texts(self, outcome):
        """The texts of the next repetition, which counts from here on."""
        has_long = outcome.long_passes < self.plan.long_repetitions
        outcome.passes += 1
        outcome.long_passes += has_long
        return {name: text for name, text in self.plan.texts.items()
                if has_long or not corpus.is_long(text)}


def is_complete(columns, key, plan):
    """Whether a column has all of its repetitions."""
    if key == "typed" and is_typed_anyway(columns):
        return True
    return key in columns and Outcome(columns[key]).is_complete(plan.repetitions_of(COLUMNS[key]))


def is_typed_anyway(columns):
    """Whether the program takes typed keys alone, also from an application with accessibility."""
    roads = columns.get("held", {}).get("roads", {})
    return "typed keys" in roads and "accessibility" not in roads


def commit(root):
    def git(*arguments):
        return subprocess.run(["git", *arguments], cwd=root, capture_output=True, text=True,
                              check=True).stdout.strip()
    # The documents do not change what is measured; the published page is one of them.
    changes = git("status", "--porcelain", "--", ":!docs")
    return (git("log", "-1", "--format=%h", "--", ":!docs", ":!*.md")
            + (" with changes" if changes else ""))


def progress(line):
    print(f"{datetime.datetime.now():%H:%M:%S}  {line}", flush=True)


def measure_row(name, plan, earlier=None):
    """Measures what the columns of one row lack; returns the row's results. `earlier` are its results
    so far, on the same commit."""
    row_class = ROWS[name]
    result = {"stamped": row_class.stamped, "paints": row_class.paints, "columns": {},
              "date": datetime.datetime.now().astimezone().isoformat(timespec="minutes"),
              "load": os.getloadavg()[0]}
    result["columns"] |= (earlier or {}).get("columns", {})
    if missing := row_class.missing():
        result["missing"] = missing
        progress(f"{name}: {missing} is not installed")
        return result
    if time.time() > plan.end:
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
        context = Context(desktop, row, plan)
        keyboard = Keyboard(desktop)
        for is_ours, is_blind in ((True, False), (True, True), (False, False)):
            group = [(key, column) for key, column in COLUMNS.items()
                     if key in plan.columns and not is_complete(results, key, plan)
                     and (column.is_ours, column.is_blind) == (is_ours, is_blind)]
            if not group or time.time() > plan.end:
                continue
            with contextlib.ExitStack() as part:
                if is_ours:
                    context.dictation = part.enter_context(
                        Dictation(desktop, keyboard, plan.binaries, row.clear, is_blind))
                for key, column in group:
                    if time.time() < plan.end:
                        results[key] = measure_column(
                            name, column, context, Outcome(results.get(key)))


def describe(error):
    return f"{type(error).__name__}: {error}".splitlines()[0]


def measure_column(name, column, context, outcome):
    begin = time.monotonic()
    left = context.plan.end - time.time()
    context.deadline = begin + min(context.plan.time_limit, left)
    try:
        column.measure(context, context.plan.repetitions_of(column), outcome)
    # A cell that fails must not cost the others. The page states the failure.
    except Exception as error:  # noqa: BLE001
        outcome.error = describe(error)
    progress(f"{name}, {column.title}: {outcome.texts - len(outcome.wrong)} of {outcome.texts} "
             f"right in {time.monotonic() - begin:.0f} s, repetitions: {outcome.passes}"
             + (f"; {outcome.error}" if outcome.error else ""))
    return outcome.values()
