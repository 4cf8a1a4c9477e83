# SPDX-License-Identifier: MIT

"""Targets, window managers, buses, trays and screens that fail or change during a recording."""

import os
import signal

from cell import Cell
from desktop import wait_for
from fault_test import FaultTest, add_cells
from faults import expects, is_read, says, steps, waits
from processes import kill_processes
from scripted_service import transcript
from tray import Tray
from windows import wait_for_window

NOWHERE = "typed text not delivered: "
SILENT = "does not answer; its text will be typed"


class Desktop(FaultTest):
    pass


def kills_target(world):
    world.target.process.kill()
    world.target.process.wait()


def stops_target(world):
    os.kill(world.target.process.pid, signal.SIGSTOP)


def continues_target(world):
    os.kill(world.target.process.pid, signal.SIGCONT)


def minimises(world):
    world.desktop.run(["xdotool", "windowminimize", world.target.window])


def another_window(world):
    """Another window takes the keyboard; the words still belong to the first one."""
    world.other = world.start_target("gtk3", title="in front")
    world.stream.send(transcript("two"))
    world.target.wait_for_text("One two")
    world.assertEqual(world.other.text, "")


def closes_other(world):
    world.other.close()


def kills_window_manager(world):
    wait_for(lambda: kill_processes(world.desktop, "openbox"), "the end of the window manager")


def starts_window_manager(world):
    world.desktop.start_window_manager()
    world.target.activate()


def replaces_window_manager(world):
    config = world.desktop.folder / "openbox.xml"
    world.desktop.spawn(["openbox", "--replace", "--config-file", str(config)])
    world.wait(1)


def removes_tray(world):
    world.tray.close()


def adds_tray(world):
    type(world).tray = Tray(world.desktop)
    world.addClassCleanup(world.tray.close)


def second_tray(world):
    removes_tray(world)
    adds_tray(world)


def layout(*arguments):
    return lambda world: world.desktop.run(["setxkbmap", *arguments])


def opens_setup(world):
    world.do_action("setup")
    world.setup_window = wait_for_window(world.desktop)


def closes_setup(world):
    world.setup_window.close()


def caps_lock(world):
    world.desktop.run(["xdotool", "key", "Caps_Lock"])


def many_windows(world):
    for number in range(10):
        world.start_target("gtk3", title=f"many {number}").close()
    world.stream.send(transcript("two"))
    world.target.wait_for_text("One two")


def selected(world):
    """The user has selected everything: the piece replaces it, as typing does."""
    world.target.tell("select 0:3")
    world.stream.send(transcript("two"))
    world.target.wait_for_text(" two")


def user_clears(world):
    world.target.tell("clear")
    world.stream.send(transcript("two"))
    world.target.wait_for_text(" two")


CELLS = [
    Cell("the target is killed", steps(kills_target, says("two"), is_read), (NOWHERE,), is_fast=True),
    Cell("the target is killed over a piece",
         steps(stops_target, says("two"), is_read, kills_target), (NOWHERE,), may_log=(SILENT,)),
    Cell("the target stops for a tenth of a second",
         steps(stops_target, says("two"), is_read, waits(0.1), continues_target, expects("One two")),
         text="One two", heal=lambda w: w.target.process.poll() is None and continues_target(w)),
    Cell("the target is minimised", steps(minimises, says("two"), expects("One two")), text="One two",
         heal=lambda w: w.target.activate()),
    Cell("another window takes the keyboard", another_window, text="One two", heal=closes_other,
         is_fast=True),
    Cell("ten windows come and go", many_windows, text="One two"),
    Cell("the user selects what was dictated", selected, text=" two"),
    Cell("the user deletes what was dictated", user_clears, text=" two"),
    Cell("the setup window is opened", steps(opens_setup, says("two"), expects("One two")), text="One two",
         heal=closes_setup, is_fast=True),
    Cell("the window manager is killed", steps(kills_window_manager, says("two"), expects("One two")),
         text="One two", heal=starts_window_manager),
    Cell("another window manager takes over", steps(replaces_window_manager, says("two"), expects("One two")),
         text="One two"),
    Cell("the tray ends and comes back", steps(second_tray, says("two"), expects("One two")),
         text="One two", is_fast=True),
    Cell("the keyboard becomes Greek", steps(layout("gr"), says("two"), expects("One two")),
         heal=layout("us"), text="One two"),
    Cell("the keyboard becomes French", steps(layout("fr"), says("two"), expects("One two")),
         heal=layout("us"), text="One two"),
    Cell("Caps Lock is on", steps(caps_lock, says("two"), expects("One two")), heal=caps_lock,
         text="One two"),
    Cell("the screen gets smaller", steps(lambda w: w.desktop.succeeds(["xrandr", "-s", "800x600"]),
                                          says("two"), expects("One two")),
         text="One two", heal=lambda w: w.desktop.succeeds(["xrandr", "-s", "1280x800"])),
    Cell("the clipboard has another owner",
         steps(lambda w: w.desktop.spawn(["sh", "-c", "echo kept | xclip -selection clipboard"]),
               says("two"), expects("One two")), text="One two"),
]


add_cells(Desktop, CELLS)
