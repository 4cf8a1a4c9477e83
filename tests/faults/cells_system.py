# SPDX-License-Identifier: MIT

"""The end of the application, and a system that lacks descriptors, memory, folders or streams."""

import dataclasses
import os
import pathlib
import signal
import subprocess

from gi.repository import GLib

from application import Log
from cell import Cell
from desktop import wait_for
from fault_test import BINARIES, FaultTest, add_cells
from faults import closes_again, expects, is_read, never_closes, says, steps, waits
from mock_logind import MockLogind
from scripted_service import transcript
from windows import wait_for_window

CANCELLED = "Deepgram error: The connection was cancelled"
WOKE = "system woke — resetting subsystems"
# The lines of a start that fails: one, and this part of it.
NO_DISPLAY = "TarvikDictate: cannot start: "


class System(FaultTest):
    @classmethod
    def prepare(cls):
        cls.logind = MockLogind(cls.desktop)
        cls.addClassCleanup(cls.logind.close)

    def start_for(self, cell):
        super().start_for(dataclasses.replace(
            cell, environment=self.logind.environment | dict(cell.environment)))

    def start_alone(self, environment=None, limits=(), drops=()):
        """Runs the application until it ends by itself; returns its status and its lines."""
        variables = self.desktop.environment | (environment or {})
        for name in drops:
            variables.pop(name, None)
        process = self.desktop.spawn([*limits, BINARIES / "tarvik-dictate"], env=variables,
                                     stderr=subprocess.PIPE, text=True, errors="replace")
        log = Log(process.stderr)
        status = process.wait(20)
        log.read_to_end()
        return status, log.lines

    def stored_seconds(self):
        line = next((line for line in self.settings_path.read_text().splitlines()
                     if line.startswith("totalDictationSeconds=")), "=0")
        return int(line.partition("=")[2])


def sends(number):
    return lambda world: os.kill(world.pid, number)


def ended_in_order(world):
    """The service has heard the end of the sound and closed the stream, and the seconds are stored."""
    world.assertEqual(world.application.process.wait(15), 0)
    wait_for(lambda: world.stream.is_closed, "the end of the stream")
    world.assertTrue(world.stream.is_audio_ended)
    world.assertGreaterEqual(world.stored_seconds(), 1)


def is_ending(world):
    wait_for(lambda: world.stream.is_audio_ended, "the end of the sound")


def ends(name, *faults, **options):
    """A cell: the application ends in order, and a new one dictates."""
    return Cell(name, steps(*faults), ends=True, **options)


def second_instance(world):
    status, lines = world.start_alone()
    world.assertEqual((status, lines), (0, ["TarvikDictate: it runs already and comes forward"]))
    wait_for_window(world.desktop).close()


def without_a_display(name, part, **how):
    """A cell: another application cannot start, says so in one line, and the first goes on."""
    def fault(world):
        status, lines = world.start_alone(
            environment={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"} | how.get("environment", {}),
            drops=how.get("drops", ()))
        world.assertEqual(status, 1)
        world.assertEqual(len(lines), 1, lines)
        world.assertIn(NO_DISPLAY, lines[0])
        world.assertIn(part, lines[0])
    return Cell(name, fault, is_fast=how.get("is_fast", False))


def unknown_action(name, action, part, **options):
    def fault(world):
        with world.assertRaises(GLib.Error):
            world.do_action(action)
    return Cell(name, fault, ("there is no action called " + part,), **options)


def limited(name, *command, **options):
    """A cell: the application runs under a limit of the system."""
    return Cell(name, command=("prlimit", *command), **options)


def leaves_descriptors(count):
    """A fault: the application can open `count` more descriptors."""
    def before(world):
        used = {int(entry.name) for entry in pathlib.Path(f"/proc/{world.pid}/fd").iterdir()}
        free = [number for number in range(1000) if number not in used]
        set_descriptor_limit(world, free[count])
    return before


def gives_descriptors(world):
    set_descriptor_limit(world, 1024)


def set_descriptor_limit(world, limit):
    subprocess.run(["prlimit", f"--pid={world.pid}", f"--nofile={limit}:"], check=True)


def wakes(world):
    world.logind.sleep_and_wake()
    world.wait_for_lines(WOKE)


def stops_and_continues(seconds):
    def fault(world):
        os.kill(world.pid, signal.SIGSTOP)
        try:
            world.wait(seconds)
            world.stream.send(transcript("two"))
        finally:
            os.kill(world.pid, signal.SIGCONT)
        world.target.wait_for_text("One two")
    return fault


def with_environment(name, **environment):
    return Cell(name, environment=environment)


LOGIND = ("hold-to-talk registered", "tap-to-toggle registered")

CELLS = [
    *(ends(f"{number.name} during a recording", waits(1.2), sends(number), ended_in_order,
           is_fast=number == signal.SIGTERM)
      for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)),
    ends("the end before the service has closed", waits(1.2), sends(signal.SIGTERM), is_ending,
         says("two"), expects("One two"), lambda w: w.stream.close(), ended_in_order, text="One two",
         before=never_closes, heal=closes_again, is_fast=True),
    ends("the end with a service that never closes", waits(1.2), sends(signal.SIGTERM), ended_in_order,
         before=never_closes, heal=closes_again, log=(CANCELLED,)),
    ends("a final piece right before the end", waits(1.2), says("two"), is_read,
         sends(signal.SIGTERM), ended_in_order, text="One two", is_fast=True),
    ends("the end of an application that connects", sends(signal.SIGTERM), opens=False,
         before=lambda w: setattr(w.service, "answer_delay", 3)),
    ends("the end right after the stop", lambda w: w.press(), says("two"), sends(signal.SIGTERM),
         expects("One two"), text="One two"),
    ends("SIGTERM twice", sends(signal.SIGTERM), is_ending, sends(signal.SIGTERM), before=never_closes,
         heal=closes_again, status=-signal.SIGTERM),
    ends("SIGKILL", sends(signal.SIGKILL), status=-signal.SIGKILL),
    Cell("SIGPIPE", sends(signal.SIGPIPE)),
    Cell("the application stopped for two seconds", stops_and_continues(2), text="One two"),
    Cell("the machine sleeps during a recording", wakes, (WOKE, *LOGIND), is_red=False,
         is_lasting=True, is_fast=True),
    Cell("the machine sleeps between recordings", before=wakes, log=(WOKE, *LOGIND)),
    Cell("a second start", second_instance, is_fast=True),
    without_a_display("no display", "", drops=("DISPLAY",), is_fast=True),
    without_a_display("a display that nobody serves", ":77", environment={"DISPLAY": ":77"}, is_fast=True),
    without_a_display("a display that is none", "nonsense", environment={"DISPLAY": "nonsense"}),
    without_a_display("a platform that Qt does not know", "strange",
                      environment={"QT_QPA_PLATFORM": "strange"}),
    unknown_action("an unknown action", "dance", "dance"),
    unknown_action("an unknown action of 10,000 characters", "x" * 10_000, "x" * 99 + "…", is_fast=True),
    unknown_action("an unknown action of line breaks", "a\nb", "a"),
    limited("few descriptors", "--nofile=64"),
    Cell("no descriptor left", before=leaves_descriptors(0), heal=gives_descriptors, opens=False,
         log=("no thread for the connection to the service: Too many open files",), is_fast=True),
    Cell("two descriptors left", before=leaves_descriptors(2), heal=gives_descriptors, opens=False,
         log=("Deepgram error: ",)),
    limited("no core files", "--core=0"),
    limited("1.5 GB of address space", "--as=1500000000"),
    with_environment("a Turkish locale", LC_ALL="tr_TR.UTF-8"),
    with_environment("a locale that is not installed", LC_ALL="xx_XX.UTF-8"),
    with_environment("the plain C locale", LC_ALL="C"),
    with_environment("no home", HOME="/nonexistent"),
    with_environment("a folder for temporary files that is not there", TMPDIR="/nonexistent"),
    with_environment("no system bus", DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere"),
    with_environment("a time zone that does not exist", TZ="Nowhere/Town"),
    Cell("the lowest priority", command=("nice", "-n", "19")),
    Cell("closed standard streams", command=("sh", "-c", 'exec "$0" "$@" <&- >&-')),
]

add_cells(System, CELLS)
