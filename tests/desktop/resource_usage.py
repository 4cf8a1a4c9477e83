# SPDX-License-Identifier: MIT

"""The processor time, the wake-ups and the memory of a process."""

import os
import pathlib
import time

from desktop import wait_for

# In seconds.
QUIET_INTERVAL = 1.0


def processor_time(pid):
    """The processor time that the process has used so far, in seconds."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def wakeups_of_threads(pid):
    """The number of voluntary context switches so far of each thread that the process has now."""
    return {
        status.parent.name: int(line.split()[1])
        for status in pathlib.Path(f"/proc/{pid}/task").glob("*/status")
        for line in status.read_text().splitlines() if line.startswith("voluntary_ctxt_switches")
    }


def wakeups(pid):
    """The number of voluntary context switches of all threads of the process so far."""
    return sum(wakeups_of_threads(pid).values())


def memory(pid):
    """The resident memory of a process in KiB, the private part, and the part that the process has
    written. Pages of a library are private too, while nobody else uses the library."""
    sizes = {}
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()[1:]:
        name, value = line.split(":")
        sizes[name] = int(value.split()[0])
    return {"Rss": sizes["Rss"], "Private": sizes["Private_Clean"] + sizes["Private_Dirty"],
            "Written": sizes["Private_Dirty"]}


def private_memory(pid):
    """The private memory of a process in KiB, and the part of it that the process has written, of each
    file that the process has mapped. The heap and other memory without a file have names in brackets."""
    sizes = {}
    for line in pathlib.Path(f"/proc/{pid}/smaps").read_text().splitlines():
        name, _, value = line.partition(":")
        if "-" in name.split()[0]:
            # The range, the rights, the offset, the device and the inode precede the name.
            parts = line.split(maxsplit=5)
            file = sizes.setdefault(pathlib.Path(parts[5]).name if len(parts) > 5 else "[anonymous]",
                                    {"Private": 0, "Written": 0})
        elif name in ("Private_Clean", "Private_Dirty"):
            file["Private"] += int(value.split()[0])
            file["Written"] += int(value.split()[0]) if name == "Private_Dirty" else 0
    return sizes


def wait_until_idle(pid):
    """Waits until the process has not woken up for a second."""
    last_count, since = wakeups(pid), time.monotonic()

    def is_idle():
        nonlocal last_count, since
        count = wakeups(pid)
        if count != last_count:
            last_count, since = count, time.monotonic()
        return time.monotonic() - since > QUIET_INTERVAL

    wait_for(is_idle, "an idle process")
