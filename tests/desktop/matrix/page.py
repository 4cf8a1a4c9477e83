# SPDX-License-Identifier: MIT

"""Writes the results as a page of the documentation."""

import collections
import os
import platform
import statistics

from matrix import corpus
from matrix.columns import COLUMNS
from matrix.run import is_typed_anyway

DICTATED = ("held", "toggle", "after", "typed")
BESIDE = ("held", "typed", "paste", "xdotool", "xdotool0")
# Why characters beyond U+FFFF may not arrive, by the row and the columns.
IMPOSSIBLE = (
    ("LibreOffice Writer", ("typed",),
     "A key event of LibreOffice carries one 16-bit unit, so no key types a character beyond U+FFFF. "
     "Through accessibility these characters arrive."),
    ("Swing text area", DICTATED,
     "A key event of Java carries one `char`, which is 16 bits, so no key types a character beyond "
     "U+FFFF. The Java bridge takes text as modified UTF-8, in which such a character is two surrogates, "
     "and D-Bus refuses surrogates."),
    ("Firefox contenteditable", DICTATED,
     "Firefox loses about one emoji in 2,000 that is typed fast: its page hears the key (`keydown` with "
     "the emoji) and then an insertion without text (`beforeinput` with empty data)."),
)
HEAD = """# Where dictated text arrives

`tests/desktop/measure-targets --page` has made this page. CONTRIBUTING.md says how to run the command.

{facts}

Each text of the corpus is one final transcript: {corpus}. A cell has the texts that arrived exactly, of all that were sent, the number of
repetitions, and the median time in milliseconds from right before the message leaves the service until the text has changed for the last time. A number in brackets is
the end of the first painted frame after that. The times are those of the short texts. **Bold** means that a text arrived wrong.

"a11y" is the road through accessibility, "keys" are typed keys. The road was told from the outside, by the keys that were pressed on the
display. "typed keys, held" is the same program with an application that cannot reach the accessibility bus. "after release" are
transcripts that come once the hotkey is up. "as held" is a program that takes typed keys alone.
"""


def describe_machine():
    model = next((line.split(":")[1].strip() for line in open("/proc/cpuinfo", encoding="utf-8")
                  if "model name" in line), platform.machine())
    release = platform.freedesktop_os_release()["PRETTY_NAME"]
    return f"{model}, {os.cpu_count()} processors, {release}"


def median(samples):
    if not samples:
        return None
    value = statistics.median(samples)
    return f"{value:.1f}" if value < 100 else f"{value:.0f}"


def count(outcome):
    right = outcome["texts"] - len(outcome["wrong"])
    text = f"{right}/{outcome['texts']}"
    return text if right == outcome["texts"] else f"**{text}**"


def time(outcome, size):
    changed, painted = median(outcome["changed"][size]), median(outcome["painted"][size])
    return (changed or "–") + (f" ({painted})" if painted else "")


def road(outcome):
    names = {"accessibility": "a11y", "typed keys": "keys"}
    roads = [name for key, name in names.items() if outcome["roads"].get(key)]
    return " and ".join(roads) + " · " if roads else ""


def cell(columns, key, with_road):
    outcome = columns.get(key)
    if outcome is None:
        return "as held" if key == "typed" and is_typed_anyway(columns) else "not measured"
    if not outcome["texts"]:
        return "**failed**"
    return ((road(outcome) if with_road else "")
            + f"{count(outcome)} · {outcome['passes']} × · {time(outcome, 'short')}")


def long_cell(columns, key):
    outcome = columns.get(key)
    if outcome is None:
        return cell(columns, key, False)
    return f"{time(outcome, 'long')} · {outcome['long_passes']} ×"


def table(results, columns, make_cell):
    lines = ["| Target | " + " | ".join(COLUMNS[key].title for key in columns) + " |",
             "|---|" + "---|" * len(columns)]
    for name, row in results.items():
        if "missing" in row:
            cells = [f"not installed: `{row['missing']}`"] + [""] * (len(columns) - 1)
        elif "error" in row and not row["columns"]:
            cells = ["**did not start**"] + [""] * (len(columns) - 1)
        else:
            cells = [make_cell(row["columns"], key) for key in columns]
        lines.append(f"| {name} | " + " | ".join(cells) + " |")
    return "\n".join(lines)


def quote(text):
    return "nothing" if not text else "`` " + text[:16].replace("`", "'") + " ``"


def wrong_texts(results):
    """A line for each text that arrived wrong in a cell, with its first example."""
    for name, row in results.items():
        if "error" in row:
            yield f"- {name}: {row['error']}"
        for key in DICTATED:
            if (outcome := row["columns"].get(key)) is None:
                continue
            title = f"{name}, {COLUMNS[key].title}"
            if outcome["error"]:
                yield f"- {title}: stopped, {outcome['error']}"
            for line, times in collections.Counter(outcome["reports"]).items():
                yield f"- {title}, the application's log, {times} ×: `{line}`"
            groups = collections.defaultdict(list)
            for wrong in outcome["wrong"]:
                groups[wrong["name"]].append(wrong)
            for text, group in groups.items():
                first = group[0]
                yield (f"- {title}, {text}, {len(group)} of {repetitions_of(text, outcome)}: at character "
                       f"{first['at']} {quote(first['expected'])} became {quote(first['actual'])}"
                       + (f". {why}" if (why := reason(name, key, first)) else ""))


def repetitions_of(name, outcome):
    return outcome["long_passes" if corpus.is_long(corpus.read().get(name, "")) else "passes"]


def reason(row, column, wrong):
    """The sentence why a text cannot arrive otherwise; empty when there is none."""
    return next((sentence for known, columns, sentence in IMPOSSIBLE
                 if row == known and column in columns and wrong["beyond_16_bits"]), "")


def facts(results):
    rows = [row for row in results.values() if "commit" in row]
    commits = sorted({row["commit"] for row in rows})
    dates = sorted(row["date"] for row in rows)
    loads = sorted(row["load"] for row in rows)
    return "\n".join((
        f"- Date: {dates[0]} to {dates[-1]}",
        f"- Commit: {', '.join(commits)}",
        f"- Machine: {describe_machine()}, Xvfb and openbox",
        f"- Load average of a minute at the beginning of each row: {loads[0]:.1f} to {loads[-1]:.1f}; "
        f"rows at a time: {max(row.get('jobs', 1) for row in rows)}"))


def write(results, path):
    texts = corpus.read()
    sizes = ", ".join(f"{name} ({len(text)})" for name, text in texts.items())
    wrong = list(wrong_texts(results))
    missed = sum(outcome["missed_presses"] for row in results.values()
                 for outcome in row["columns"].values())
    stamps = collections.defaultdict(list)
    for name, row in results.items():
        stamps[row.get("stamped", "not measured")].append(name)
    sections = [
        HEAD.format(facts=facts(results), corpus=sizes),
        "## Dictation\n", table(results, DICTATED, lambda columns, key: cell(columns, key, True)), "",
        "## Beside other means\n",
        "In the same run, on the same windows. The clipboard is that of `xclip`, and `xdotool` presses "
        "the program's key for a paste. The time of another means begins before its program "
        "starts.\n",
        table(results, BESIDE, lambda columns, key: cell(columns, key, False)), "",
        "## 2,000 characters at once\n",
        table(results, BESIDE, long_cell), "",
        "## What was dictated and arrived wrong\n", "\n".join(wrong) if wrong else "Nothing.", "",
        f"Presses of a hotkey that began no recording and were repeated: {missed}.\n",
        "## How the times came about\n",
        "All times are CLOCK_MONOTONIC. The service, the application and the target are three "
        "processes.\n",
        "\n".join(f"- {', '.join(names)}: {how}." for how, names in stamps.items()), ""]
    path.write_text("\n".join(sections), encoding="utf-8")
