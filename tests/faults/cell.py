# SPDX-License-Identifier: MIT

"""One cell of the fault matrix: what goes wrong, and what must be true then."""

import dataclasses
from collections.abc import Callable, Mapping


def nothing(_world):
    """The fault of a cell whose surroundings alone are wrong."""


@dataclasses.dataclass(frozen=True)
class Cell:
    """A recording with a fault, and a healthy one after it.

    The order is: `before`, the press, the final piece "One" unless `opens` is false, `fault`, the stop,
    `heal`. `log` has a part of each line that the log must have besides the lines of the start and the
    stop; it must have no others. `text` is what the target must have in the end. Settings, variables and
    `command` (the beginning of a command that runs the application) make a new application."""

    name: str
    fault: Callable = nothing
    log: tuple = ()
    text: str = "One"
    opens: bool = True
    before: Callable = nothing
    heal: Callable = nothing
    settings: Mapping = dataclasses.field(default_factory=dict)
    environment: Mapping = dataclasses.field(default_factory=dict)
    command: tuple = ()
    # Parts of lines that may come as well, as the timing falls out.
    may_log: tuple = ()
    # Whether the icon is red when the fault has happened.
    is_red: bool = True
    # Whether the fault lasts as long as the application, so that the next recording needs a new one.
    is_lasting: bool = False
    # Whether the application has ended by the fault, and then its exit status.
    ends: bool = False
    status: int = 0
    # Whether only root can make the fault. Anybody else skips the cell.
    needs_root: bool = False
    # Whether the cell is cheap and telling enough for every run of the tests.
    is_fast: bool = False
    # Names of the parts that another project wrote and that this cell uses.
    parts: tuple = ()


# Written once for each chunk of sound that cannot be sent.
REPEATED = "Deepgram error: A message could not be sent: "


def unmatched(lines, expected):
    """The lines that no part in `expected` explains, and the parts that are in no line. A part explains
    one line; one part explains all chunks of sound that could not be sent."""
    left, repeated = [], set()
    for line in lines:
        if not line.startswith(REPEATED):
            left.append(line)
        elif line not in repeated:
            repeated.add(line)
            left.append(line)
    missing = []
    for part in expected:
        found = next((line for line in left if part in line), None)
        if found is None:
            missing.append(part)
        else:
            left.remove(found)
    return left, missing
