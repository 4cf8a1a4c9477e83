"""What a process uses."""

import os
import pathlib


def processor_time(pid):
    """Seconds of processor time that the process has used."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def wakeups(pid):
    """How often the threads of the process have gone to sleep by themselves."""
    return sum(
        int(line.split()[1])
        for status in pathlib.Path(f"/proc/{pid}/task").glob("*/status")
        for line in status.read_text().splitlines() if line.startswith("voluntary_ctxt_switches")
    )
