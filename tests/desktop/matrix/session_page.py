# SPDX-License-Identifier: MIT

"""Writes the measured tables into the page about desktops. The page's other text stays."""

import collections
import re
import statistics

from matrix import corpus
from matrix.page import describe_machine, quote
from matrix.session_rows import ROWS

BEGIN = "<!-- measure-desktops --page writes from here -->"
END = "<!-- to here -->"
WAYS = ("held", "toggled")
ROADS = {"accessibility": "a11y", "typed keys": "typed"}


def median(cell, size):
    """The median of the times of both ways, in milliseconds; or None."""
    times = [time for way in cell["columns"].values() for time in way["changed"][size]]
    return statistics.median(times) if times else None


def roads(cell):
    """The roads of the texts. A road that only a few texts took is named with their number."""
    counts = collections.Counter()
    for way in cell["columns"].values():
        for road, names in way["roads"].items():
            counts[ROADS[road]] += len(names)
    total = sum(counts.values())
    return " and ".join(road if count > total / 2 else f"{road} ({count})"
                        for road, count in counts.most_common())


def describe_way(cell, way):
    outcome = cell["columns"].get(way)
    if outcome is None or not outcome["texts"]:
        return f"{way} **failed**"
    right = outcome["texts"] - len(outcome["wrong"])
    count = f"{right}/{outcome['texts']}"
    return f"{way} {count if right == outcome['texts'] else f'**{count}**'}"


def describe_cell(cell):
    if cell is None:
        return "not measured"
    if "missing" in cell:
        return "–"
    if "error" in cell and not cell["columns"]:
        return "**did not start**"
    parts = [roads(cell), *(describe_way(cell, way) for way in WAYS)]
    if (short := median(cell, "short")) is not None:
        parts.append(f"{short:.0f} ms")
    if (long := median(cell, "long")) is not None:
        length = max(map(len, corpus.read().values()))
        parts.append(f"{length / long * 1e3:.0f}/s")
    return " · ".join(part for part in parts if part)


def table(results):
    lines = ["| Program | " + " | ".join(results) + " |", "|---|" + "---|" * len(results)]
    for row in ROWS:
        cells = (describe_cell(cells.get(row)) for cells in results.values())
        lines.append(f"| {row} | " + " | ".join(cells) + " |")
    return "\n".join(lines)


def means(results):
    """A line for each session: what serves it, by the log of the application."""
    for session, cells in results.items():
        found = next((cell["means"] for cell in cells.values() if "means" in cell), {})
        yield f"- {session}: " + "; ".join(f"{service} by {name}" for service, name in found.items())


def wrong_texts(results):
    """A line for each text that arrived wrong, and for each text that the log reports."""
    for session, cells in results.items():
        for row, cell in cells.items():
            if "error" in cell:
                yield f"- {session}, {row}: {cell['error']}"
            for way, outcome in cell["columns"].items():
                title = f"- {session}, {row}, {way}"
                if outcome["error"]:
                    yield f"{title}: stopped, {outcome['error']}"
                for wrong in outcome["wrong"]:
                    yield (f"{title}, {wrong['name']}: at character {wrong['at']} "
                           f"{quote(wrong['expected'])} became {quote(wrong['actual'])}")
                reports = (re.sub(r"process [0-9]+", "the process", line)
                           for line in outcome["reports"])
                for line, times in collections.Counter(reports).items():
                    yield f"{title}, the log, {times} ×: `{line}`"


def facts(results):
    cells = [cell for cells in results.values() for cell in cells.values() if "load" in cell]
    loads = sorted(cell["load"] for cell in cells)
    passes = sorted({way["passes"] for cell in cells for way in cell["columns"].values()})
    dates = sorted(cell["date"] for cell in cells)
    commits = sorted({cell["commit"] for cell in cells})
    return "\n".join((
        f"- Date: {dates[0]} to {dates[-1]}; commit: {', '.join(commits)}",
        f"- Machine: {describe_machine()}",
        f"- Load average of a minute at the beginning of each cell: {loads[0]:.1f} to {loads[-1]:.1f}",
        f"- Repetitions of each text, held and toggled: {', '.join(map(str, passes))}"))


def write(results, path):
    before, begin, rest = path.read_text(encoding="utf-8").partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        raise ValueError(f"{path} has no place for the tables")
    wrong = list(wrong_texts(results))
    parts = ("", facts(results), "", table(results), "", *means(results), "",
             "What arrived wrong, and what the application's log says of it:", "",
             "\n".join(wrong) if wrong else "Nothing.", "")
    path.write_text(before + BEGIN + "\n".join(parts) + END + after, encoding="utf-8")
