#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A program on the accessibility bus without anything on the screen. It has two text fields. The
first one reports that it has the focus and misbehaves like a toolkit with a defect. The second one
is honest. The program has no window unless it is told to.

With --unheard-activation the program joins the registry as GTK does, and its window becomes active
just before the program knows who listens. So no event tells of the window; its state does.

Prints "ready" after the first focus event, or once it knows who listens. Commands on standard
input: "focus" reports the focus again, "blur" reports its loss, "activate" and "deactivate" report
that its window is active or is not, "lose" takes the focus away inside the window, "grab" acts like
a key grab, which makes the window inactive as well, "pane" and "outer-pane" have something around
the field report the focus that the field has, "second" reports the focus of the second field,
"read" prints the text of the second field, "insertions" prints the number of requested insertions,
"asked" prints how often the field was asked for its states during the silence,
"examinations" prints how often the window was asked for its states, "parents" prints how often
anything was asked for its parent, "behave NAME" changes the behaviour, "type TEXT" acts like typed
keys, "wake" ends a silence, "settle" prints "done" when all requests sent so far are handled,
"quit" ends the program. The other commands print "done" at once.
"""

import argparse
import os
import time

import dbus
import dbus.service
from gi.repository import GLib

import accessibility_bus
import target_options
from utf16 import text_of, units_of

ACCESSIBLE = "org.a11y.atspi.Accessible"
APPLICATION = "org.a11y.atspi.Application"
TEXT = "org.a11y.atspi.Text"
EDITABLE_TEXT = "org.a11y.atspi.EditableText"
OBJECT_EVENT = "org.a11y.atspi.Event.Object"
WINDOW_EVENT = "org.a11y.atspi.Event.Window"
REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"
FIELD = "/org/a11y/atspi/accessible/1"
SECOND_FIELD = "/org/a11y/atspi/accessible/2"
WINDOW = "/org/a11y/atspi/accessible/3"
PANE = "/org/a11y/atspi/accessible/4"
OUTER_PANE = "/org/a11y/atspi/accessible/5"
# Roles, as the interface numbers them.
PASSWORD_TEXT = 40
ENTRY = 79

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("--behaviour", default="honest",
                    choices=["honest", "liar", "late", "refusing", "short", "cutting", "cutting-slowly",
                             "silent-on-query", "silent-again", "silent-on-insertion", "silent-and-refusing",
                             "silent-and-short", "silent-and-utf16", "silent-and-late",
                             "silent-and-utf16-short", "silent-and-utf16-unreadable",
                             "silent-on-deletion", "dying-on-insertion", "slow", "slow-writing",
                             "undeletable", "nonsense", "garbling", "unreadable", "utf16",
                             "utf16-cutting", "masking"])
parser.add_argument("--window", action="store_true")
parser.add_argument("--unheard-activation", action="store_true")
parser.add_argument("--slow-window", action="store_true",
                    help="the window's first reply takes 0.8 s")
parser.add_argument("--toolkit", default="fake")
parser.add_argument("--text", default="")
parser.add_argument("--select", metavar="A:B")
parser.add_argument("--out", required=True)
options = parser.parse_args()


class Field:
    def __init__(self, behaviour, text, selection, on_change):
        self.behaviour = behaviour
        self.counts_utf16 = "utf16" in behaviour
        self.text = self.first_text = units_of(text) if self.counts_utf16 else text
        self.on_change = on_change
        self.start = self.end = len(self.text)
        if selection:
            self.start, self.end = [int(part) for part in selection.split(":")]
        self.has_focus = True
        self.insertions = 0
        self.is_silent = self.was_silent = False
        self.questions = 0
        # The requests during a silence. Like a stopped program, the field handles them afterwards.
        self.waiting = []

    def replace(self, start, end, text):
        self.text = self.text[:start] + text + self.text[end:]
        self.start = self.end = start + len(text)
        self.on_change(text_of(self.text))

    def fall_silent(self):
        self.is_silent = self.was_silent = True

    def wake(self):
        self.is_silent = False
        self.questions = 0
        for reply, work in self.waiting:
            reply(*work())
        self.waiting = []

    def insert(self, position, text):
        if self.counts_utf16:
            text = units_of(text)
        if self.behaviour in ("short", "silent-and-short"):
            text = text[:3]
        elif self.behaviour == "silent-and-utf16-short":
            text = text[:6]
        elif self.behaviour == "garbling":
            # Every byte of a long character becomes a character of its own.
            text = "".join(char if ord(char) <= 0xFFFF else char.encode().decode("latin-1")
                           for char in text)
        self.replace(position, position, text)
        if self.behaviour in ("cutting", "cutting-slowly", "utf16-cutting"):
            self.replace(len(self.first_text), len(self.text), "")


field = Field(options.behaviour, options.text, options.select,
              lambda text: target_options.publish(options, text))
second_field = Field("honest", "", None, lambda text: None)


class Root(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return options.toolkit

    @dbus.service.method(ACCESSIBLE, out_signature="a(so)")
    def GetChildren(self):
        windows = [reference(WINDOW)] if options.unheard_activation else []
        return dbus.Array(windows, signature="(so)")


class Container(dbus.service.Object):
    """The window, or the pane around the first field. It never has the focus."""

    is_active = False
    examinations = 0
    parent_path = ROOT

    @dbus.service.method(ACCESSIBLE, out_signature="au")
    def GetState(self):
        self.examinations += 1
        if options.slow_window and self.examinations == 1:
            time.sleep(0.8)
        return dbus.Array([self.is_active << 1 | 1 << 25, 0], signature="u")

    @dbus.service.method(ACCESSIBLE, out_signature="as")
    def GetInterfaces(self):
        return [ACCESSIBLE]

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        count_parent_query()
        return dbus.Struct(reference(self.parent_path))

    @dbus.service.method(ACCESSIBLE, out_signature="a(so)")
    def GetChildren(self):
        return dbus.Array([], signature="(so)")

    @dbus.service.signal(OBJECT_EVENT, signature="siiv(so)")
    def StateChanged(self, state, value, unused, nothing, application):
        pass

    @dbus.service.signal(WINDOW_EVENT, signature="siiv(so)")
    def Activate(self, text, value, unused, nothing, application):
        pass

    @dbus.service.signal(WINDOW_EVENT, signature="siiv(so)")
    def Deactivate(self, text, value, unused, nothing, application):
        pass


class Widget(dbus.service.Object):
    def __init__(self, connection, path, its_field):
        super().__init__(connection, path)
        self.field = its_field

    def answer(self, reply, work):
        """Handles the requests in their order. During a silence they wait for its end."""
        if self.field.is_silent:
            self.field.waiting.append((reply, work))
        else:
            reply(*work())

    @dbus.service.method(ACCESSIBLE, out_signature="au", async_callbacks=("reply", "error"))
    def GetState(self, reply, error):
        self.field.questions += self.field.is_silent
        if self.field.behaviour == "nonsense":
            self.answer(reply, lambda: (dbus.Array([0xFFFFFF80, 0], signature="u"),))
        else:
            self.answer(reply, lambda: (dbus.Array(
                [1 << 7 | self.field.has_focus << 12 | 1 << 25, 0], signature="u"),))

    @dbus.service.method(ACCESSIBLE, out_signature="as", async_callbacks=("reply", "error"))
    def GetInterfaces(self, reply, error):
        if self.field.behaviour == "slow":
            time.sleep(0.7)
        elif self.field.behaviour == "silent-on-query" and not self.field.was_silent:
            self.field.fall_silent()
        self.answer(reply, lambda: ([ACCESSIBLE, TEXT, EDITABLE_TEXT],))

    @dbus.service.method(ACCESSIBLE, out_signature="u", async_callbacks=("reply", "error"))
    def GetRole(self, reply, error):
        self.answer(reply, lambda: (
            dbus.UInt32(PASSWORD_TEXT if self.field.behaviour == "masking" else ENTRY),))

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v",
                         async_callbacks=("reply", "error"))
    def Get(self, interface, name, reply, error):
        if name == "Parent":
            count_parent_query()
            around = PANE if self.field is field else ROOT
            self.answer(reply, lambda: (dbus.Struct(reference(around)),))
        elif self.field.behaviour == "nonsense":
            self.answer(reply, lambda: (dbus.Int32(2147483647),))
        elif name == "CharacterCount":
            if self.field.behaviour == "cutting-slowly":
                time.sleep(0.1)
            self.answer(reply, lambda: (dbus.Int32(len(self.field.text)),))
            # The last request before the writer changes anything.
            if self.field.behaviour == "silent-on-deletion" and not self.field.was_silent:
                self.field.fall_silent()
        else:
            self.answer(reply, lambda: (dbus.Int32(self.field.end),))

    @dbus.service.method(TEXT, out_signature="i", async_callbacks=("reply", "error"))
    def GetNSelections(self, reply, error):
        if self.field.behaviour == "slow-writing":
            time.sleep(0.15)
        elif self.field.behaviour == "silent-again" and not self.field.is_silent:
            self.field.fall_silent()
        self.answer(reply, lambda: (1 if self.field.end > self.field.start or
                                    self.field.behaviour == "nonsense" else 0,))

    @dbus.service.method(TEXT, in_signature="i", out_signature="ii",
                         async_callbacks=("reply", "error"))
    def GetSelection(self, number, reply, error):
        if self.field.behaviour == "nonsense":
            self.answer(reply, lambda: (dbus.Int32(-2147483648), dbus.Int32(2147483647)))
        else:
            self.answer(reply, lambda: (self.field.start, self.field.end))

    @dbus.service.method(TEXT, in_signature="ii", out_signature="s",
                         async_callbacks=("reply", "error"))
    def GetText(self, start, end, reply, error):
        def work():
            text = text_of(self.field.text[start:end])
            if "unreadable" in self.field.behaviour:
                return ("",)
            return ("•" * len(text) if self.field.behaviour == "masking" else text,)

        self.answer(reply, work)

    @dbus.service.method(TEXT, in_signature="i", out_signature="b",
                         async_callbacks=("reply", "error"))
    def SetCaretOffset(self, offset, reply, error):
        def work():
            self.field.start = self.field.end = offset
            return (True,)

        self.answer(reply, work)

    @dbus.service.method(EDITABLE_TEXT, in_signature="ii", out_signature="b",
                         async_callbacks=("reply", "error"))
    def DeleteText(self, start, end, reply, error):
        def work():
            if self.field.behaviour not in ("liar", "undeletable"):
                self.field.replace(start, end, "")
            return (True,)

        self.answer(reply, work)

    @dbus.service.method(EDITABLE_TEXT, in_signature="isi", out_signature="b",
                         async_callbacks=("reply", "error"))
    def InsertText(self, position, text, length, reply, error):
        self.field.insertions += 1

        def work():
            if self.field.behaviour in ("refusing", "silent-and-refusing"):
                return (False,)
            if self.field.behaviour in ("late", "silent-and-late"):
                GLib.timeout_add(80, lambda: self.field.insert(position, text))
            elif self.field.behaviour != "liar":
                self.field.insert(position, text)
            return (True,)

        if self.field.behaviour == "slow-writing":
            time.sleep(0.15)
        if self.field.behaviour == "dying-on-insertion":
            os._exit(1)
        if (self.field.behaviour == "silent-on-insertion" or
                self.field.behaviour.startswith("silent-and-")):
            self.field.fall_silent()
        self.answer(reply, work)

    @dbus.service.signal(OBJECT_EVENT, signature="siiv(so)")
    def StateChanged(self, state, value, unused, nothing, application):
        pass


parent_queries = 0


def count_parent_query():
    global parent_queries
    parent_queries += 1


bus = accessibility_bus.connect()
root = Root(bus, ROOT)
widget = Widget(bus, FIELD, field)
second_widget = Widget(bus, SECOND_FIELD, second_field)
window = Container(bus, WINDOW)
pane = Container(bus, PANE)
# The pane is in another one, which is in the window.
outer_pane = Container(bus, OUTER_PANE)
pane.parent_path = OUTER_PANE
outer_pane.parent_path = WINDOW
loop = GLib.MainLoop()


def reference(path):
    return (bus.get_unique_name(), dbus.ObjectPath(path))


def focus(focused_widget, is_focused=1):
    focused_widget.StateChanged("focused", is_focused, 0, dbus.Int32(0), reference(ROOT))


def activate(is_active):
    window.is_active = is_active
    event = window.Activate if is_active else window.Deactivate
    event("", 0, 0, dbus.Int32(0), reference(ROOT))


def join_registry():
    def fail(error):
        raise SystemExit(f"the registry refuses: {error}")

    def joined(_desktop):
        bus.call_async(REGISTRY, "/org/a11y/atspi/registry", REGISTRY, "GetRegisteredEvents", "", (),
                       learned_listeners, fail)

    def learned_listeners(_listeners):
        window.is_active = True
        target_options.announce("ready")

    bus.call_async(REGISTRY, ROOT, "org.a11y.atspi.Socket", "Embed", "(so)", (reference(ROOT),),
                   joined, fail)


def command(line):
    if line == "focus":
        focus(widget)
    elif line == "blur":
        focus(widget, 0)
    elif line in ("activate", "deactivate"):
        activate(line == "activate")
    elif line in ("lose", "grab"):
        field.has_focus = False
        focus(widget, 0)
        if line == "grab":
            activate(False)
    elif line in ("pane", "outer-pane"):
        focus(pane if line == "pane" else outer_pane)
    elif line == "second":
        focus(second_widget)
    elif line == "read":
        target_options.announce(second_field.text)
        return
    elif line.startswith("behave "):
        field.behaviour = line.removeprefix("behave ")
    elif line == "asked":
        target_options.announce(str(field.questions))
        return
    elif line == "insertions":
        target_options.announce(str(field.insertions))
        return
    elif line == "parents":
        target_options.announce(str(parent_queries))
        return
    elif line == "examinations":
        target_options.announce(str(window.examinations))
        return
    elif line.startswith("type "):
        field.replace(field.start, field.end, line.removeprefix("type "))
    elif line == "wake":
        field.wake()
        bus.flush()
    elif line == "settle":
        # This call returns after all messages that the bus held for the program. The idle handler
        # runs after those messages.
        bus.get_name_owner("org.freedesktop.DBus")
        GLib.idle_add(lambda: target_options.announce("done"), priority=GLib.PRIORITY_LOW)
        return
    elif line == "quit":
        loop.quit()
        return
    target_options.announce("done")


target_options.publish(options, text_of(field.text))
readable = target_options.read_commands(command)
GLib.io_add_watch(0, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, lambda *_: readable())
if options.unheard_activation:
    join_registry()
else:
    if options.window:
        activate(True)
    focus(widget)
    target_options.announce("ready")
loop.run()
