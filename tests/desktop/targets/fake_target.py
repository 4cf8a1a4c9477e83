#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A program without a window on the accessibility bus. It has one text field, which reports that it
has the focus and misbehaves like a toolkit with a defect.

Prints "ready" after the first focus event. Commands on standard input: "focus" reports the focus
again, "blur" reports its loss, "insertions" prints the number of requested insertions, "type TEXT"
acts like typed keys, "wake" ends a silence, "settle" prints "done" when all requests sent so far are
handled, "quit" ends the program. The other commands print "done" at once.
"""

import argparse
import os
import time

import dbus
import dbus.bus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

import target_options

ACCESSIBLE = "org.a11y.atspi.Accessible"
APPLICATION = "org.a11y.atspi.Application"
TEXT = "org.a11y.atspi.Text"
EDITABLE_TEXT = "org.a11y.atspi.EditableText"
OBJECT_EVENT = "org.a11y.atspi.Event.Object"
ROOT = "/org/a11y/atspi/accessible/root"
FIELD = "/org/a11y/atspi/accessible/1"

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("--behaviour", default="honest",
                    choices=["honest", "liar", "late", "refusing", "short", "cutting",
                             "silent-on-insertion", "silent-and-refusing", "silent-and-short",
                             "silent-on-deletion", "dying-on-insertion", "slow", "undeletable",
                             "nonsense"])
parser.add_argument("--toolkit", default="fake")
parser.add_argument("--text", default="")
parser.add_argument("--select", metavar="A:B")
parser.add_argument("--out", required=True)
options = parser.parse_args()


class Field:
    def __init__(self):
        self.text = options.text
        self.start = self.end = len(self.text)
        if options.select:
            self.start, self.end = [int(part) for part in options.select.split(":")]
        self.insertions = 0
        self.is_silent = self.was_silent = False
        # The requests during a silence. Like a stopped program, the field handles them afterwards.
        self.waiting = []

    def replace(self, start, end, text):
        self.text = self.text[:start] + text + self.text[end:]
        self.start = self.end = start + len(text)
        target_options.publish(options, self.text)

    def fall_silent(self):
        self.is_silent = self.was_silent = True

    def wake(self):
        self.is_silent = False
        for reply, work in self.waiting:
            reply(*work())
        self.waiting = []

    def insert(self, position, text):
        if options.behaviour in ("short", "silent-and-short"):
            text = text[:3]
        self.replace(position, position, text)
        if options.behaviour == "cutting":
            self.replace(len(options.text), len(self.text), "")


field = Field()


class Root(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return options.toolkit

    @dbus.service.method(ACCESSIBLE, out_signature="a(so)")
    def GetChildren(self):
        return dbus.Array([], signature="(so)")


class Widget(dbus.service.Object):
    def answer(self, reply, work):
        """Handles the requests in their order. During a silence they wait for its end."""
        if field.is_silent:
            field.waiting.append((reply, work))
        else:
            reply(*work())

    @dbus.service.method(ACCESSIBLE, out_signature="au", async_callbacks=("reply", "error"))
    def GetState(self, reply, error):
        if options.behaviour == "nonsense":
            self.answer(reply, lambda: (dbus.Array([0xFFFFFF80, 0], signature="u"),))
        else:
            self.answer(reply, lambda: (dbus.Array([1 << 7 | 1 << 12 | 1 << 25, 0],
                                                   signature="u"),))

    @dbus.service.method(ACCESSIBLE, out_signature="as", async_callbacks=("reply", "error"))
    def GetInterfaces(self, reply, error):
        if options.behaviour == "slow":
            time.sleep(0.7)
        self.answer(reply, lambda: ([ACCESSIBLE, TEXT, EDITABLE_TEXT],))

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v",
                         async_callbacks=("reply", "error"))
    def Get(self, interface, name, reply, error):
        if options.behaviour == "nonsense":
            self.answer(reply, lambda: (dbus.Int32(2147483647),))
        elif name == "CharacterCount":
            self.answer(reply, lambda: (dbus.Int32(len(field.text)),))
            # The last request before the writer changes anything.
            if options.behaviour == "silent-on-deletion" and not field.was_silent:
                field.fall_silent()
        else:
            self.answer(reply, lambda: (dbus.Int32(field.end),))

    @dbus.service.method(TEXT, out_signature="i", async_callbacks=("reply", "error"))
    def GetNSelections(self, reply, error):
        self.answer(reply, lambda: (1 if field.end > field.start or
                                    options.behaviour == "nonsense" else 0,))

    @dbus.service.method(TEXT, in_signature="i", out_signature="ii",
                         async_callbacks=("reply", "error"))
    def GetSelection(self, number, reply, error):
        if options.behaviour == "nonsense":
            self.answer(reply, lambda: (dbus.Int32(-2147483648), dbus.Int32(2147483647)))
        else:
            self.answer(reply, lambda: (field.start, field.end))

    @dbus.service.method(TEXT, in_signature="ii", out_signature="s",
                         async_callbacks=("reply", "error"))
    def GetText(self, start, end, reply, error):
        self.answer(reply, lambda: (field.text[start:end],))

    @dbus.service.method(TEXT, in_signature="i", out_signature="b",
                         async_callbacks=("reply", "error"))
    def SetCaretOffset(self, offset, reply, error):
        def work():
            field.start = field.end = offset
            return (True,)

        self.answer(reply, work)

    @dbus.service.method(EDITABLE_TEXT, in_signature="ii", out_signature="b",
                         async_callbacks=("reply", "error"))
    def DeleteText(self, start, end, reply, error):
        def work():
            if options.behaviour not in ("liar", "undeletable"):
                field.replace(start, end, "")
            return (True,)

        self.answer(reply, work)

    @dbus.service.method(EDITABLE_TEXT, in_signature="isi", out_signature="b",
                         async_callbacks=("reply", "error"))
    def InsertText(self, position, text, length, reply, error):
        field.insertions += 1

        def work():
            if options.behaviour in ("refusing", "silent-and-refusing"):
                return (False,)
            if options.behaviour == "late":
                GLib.timeout_add(80, lambda: field.insert(position, text))
            elif options.behaviour != "liar":
                field.insert(position, text)
            return (True,)

        if options.behaviour == "dying-on-insertion":
            os._exit(1)
        if options.behaviour in ("silent-on-insertion", "silent-and-refusing", "silent-and-short"):
            field.fall_silent()
        self.answer(reply, work)

    @dbus.service.signal(OBJECT_EVENT, signature="siiv(so)")
    def StateChanged(self, state, value, unused, nothing, application):
        pass


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
session = dbus.SessionBus()
address = dbus.Interface(session.get_object("org.a11y.Bus", "/org/a11y/bus", introspect=False),
                         "org.a11y.Bus").GetAddress()
bus = dbus.bus.BusConnection(address)
root = Root(bus, ROOT)
widget = Widget(bus, FIELD)
loop = GLib.MainLoop()


def focus(is_focused=1):
    widget.StateChanged("focused", is_focused, 0, dbus.Int32(0),
                        (bus.get_unique_name(), dbus.ObjectPath(ROOT)))


def command(line):
    if line == "focus":
        focus()
    elif line == "blur":
        focus(0)
    elif line == "insertions":
        target_options.announce(str(field.insertions))
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


target_options.publish(options, field.text)
readable = target_options.read_commands(command)
GLib.io_add_watch(0, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, lambda *_: readable())
focus()
target_options.announce("ready")
loop.run()
