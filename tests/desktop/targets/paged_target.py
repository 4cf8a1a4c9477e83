#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A program on the accessibility bus that shows a document as LibreOffice does, without anything on the
screen. Each paragraph is a widget on each of its pages. A page has 12 UTF-16 units. A widget has the
caret -1 while the caret is elsewhere, and at the end of a page two widgets have the caret. The program
confirms an insertion at -1, and does nothing.

Prints "ready" after the first focus event. Commands on standard input: "caret N" places the caret in the
whole text, "insertions" prints the number of requested insertions, "leave" moves the focus to another
document of the program, "read" prints the text of that document, "quit" ends the program.
"""

import argparse
import time

import dbus
import dbus.service
from gi.repository import GLib

import accessibility_bus
import target_options
from utf16 import text_of, units_of

ACCESSIBLE = "org.a11y.atspi.Accessible"
TEXT = "org.a11y.atspi.Text"
EDITABLE_TEXT = "org.a11y.atspi.EditableText"
ROOT = "/org/a11y/atspi/accessible/root"
FLOWS_FROM = 11
PARAGRAPH = 73
PAGE = 12

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("--text", default="")
parser.add_argument("--scrolling", action="store_true",
                    help="only the widgets that have the caret are there")
parser.add_argument("--lying", action="store_true", help="confirms insertions and does nothing")
parser.add_argument("--slow", action="store_true", help="the first reply about relations takes 0.7 s")
parser.add_argument("--quiet", action="store_true", help="reports only the first focus")
parser.add_argument("--out", required=True)
options = parser.parse_args()


class Part(dbus.service.Object):
    """What one page shows of one paragraph."""

    def __init__(self, document, number):
        document.paths += 1
        super().__init__(bus, f"{document.path}/{document.paths}")
        self.document, self.number = document, number

    @property
    def range(self):
        ranges = self.document.ranges()
        return ranges[self.number] if self.number < len(ranges) else (0, 0)

    @property
    def caret(self):
        start, end = self.range
        return self.document.caret - start if start <= self.document.caret <= end else -1

    @dbus.service.method(ACCESSIBLE, out_signature="au")
    def GetState(self):
        return dbus.Array([1 << 7 | (self.caret >= 0) << 12 | 1 << 25, 0], signature="u")

    @dbus.service.method(ACCESSIBLE, out_signature="as")
    def GetInterfaces(self):
        return [ACCESSIBLE, TEXT, EDITABLE_TEXT]

    @dbus.service.method(ACCESSIBLE, out_signature="u")
    def GetRole(self):
        return dbus.UInt32(PARAGRAPH)

    @dbus.service.method(ACCESSIBLE, out_signature="a(ua(so))")
    def GetRelationSet(self):
        if options.slow:
            options.slow = False
            time.sleep(0.7)
        relations = []
        if self.number > 0:
            before = self.document.part(self.number - 1)
            relations.append((dbus.UInt32(FLOWS_FROM), [reference(before)]))
        return dbus.Array(relations, signature="(ua(so))")

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        start, end = self.range
        return {"CharacterCount": dbus.Int32(end - start), "CaretOffset": dbus.Int32(self.caret),
                "Parent": dbus.Struct((bus.get_unique_name(), dbus.ObjectPath(self.document.path)))}[name]

    @dbus.service.method(TEXT, out_signature="i")
    def GetNSelections(self):
        return 0

    @dbus.service.method(TEXT, in_signature="i", out_signature="ii")
    def GetSelection(self, number):
        return (-1, -1)

    @dbus.service.method(TEXT, in_signature="ii", out_signature="s")
    def GetText(self, start, end):
        first, last = self.range
        return text_of(self.document.text[first + start:first + end]) if end <= last - first else ""

    @dbus.service.method(TEXT, in_signature="i", out_signature="b")
    def SetCaretOffset(self, offset):
        start, end = self.range
        if not 0 <= offset <= end - start:
            return False
        self.document.place_caret(start + offset)
        return True

    @dbus.service.method(EDITABLE_TEXT, in_signature="ii", out_signature="b")
    def DeleteText(self, start, end):
        first = self.range[0]
        self.document.replace(first + start, first + end, "")
        return True

    @dbus.service.method(EDITABLE_TEXT, in_signature="isi", out_signature="b")
    def InsertText(self, position, text, length):
        self.document.insertions += 1
        if position >= 0 and not options.lying:
            first = self.range[0]
            self.document.replace(first + position, first + position, units_of(text))
        return True

    @dbus.service.signal("org.a11y.atspi.Event.Object", signature="siiv(so)")
    def StateChanged(self, state, value, unused, nothing, application):
        pass


class Document:
    def __init__(self, path, text):
        self.path = path
        self.text = units_of(text)
        self.caret = len(self.text)
        self.paths = self.insertions = 0
        self.parts = {}
        self.has_focus = False

    def ranges(self):
        """The beginning and the end of each widget's text."""
        ranges, start = [], 0
        for paragraph in self.text.split("\n"):
            end = start + len(paragraph)
            ranges += [(first, min(first + PAGE, end)) for first in range(start, max(end, start + 1), PAGE)]
            start = end + 1
        return ranges

    def part(self, number):
        if number not in self.parts:
            self.parts[number] = Part(self, number)
        return self.parts[number]

    def numbers_with_caret(self):
        return [number for number, (start, end) in enumerate(self.ranges()) if start <= self.caret <= end]

    def focus(self, is_focused=True):
        self.has_focus = is_focused
        for number in self.numbers_with_caret():
            self.report(number, is_focused)

    def report(self, number, is_focused):
        self.part(number).StateChanged("focused", is_focused, 0, dbus.Int32(0),
                                       (bus.get_unique_name(), ROOT))

    def place_caret(self, offset):
        before = set(self.numbers_with_caret()) & set(self.parts)
        self.caret = offset
        now = self.numbers_with_caret()
        if self.has_focus and not options.quiet:
            for number in before - set(now):
                if not options.scrolling:
                    self.report(number, False)
            for number in now:
                if number not in before:
                    self.report(number, True)
        if options.scrolling:
            for number in set(self.parts) - set(now):
                self.parts.pop(number).remove_from_connection()

    def replace(self, start, end, units):
        self.text = self.text[:start] + units + self.text[end:]
        self.place_caret(start + len(units))
        if self is document:
            target_options.publish(options, text_of(self.text))


class Root(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return "gtk"

    @dbus.service.method(ACCESSIBLE, out_signature="a(so)")
    def GetChildren(self):
        return dbus.Array([], signature="(so)")


def reference(part):
    return (bus.get_unique_name(), dbus.ObjectPath(part.__dbus_object_path__))


def command(line):
    if line.startswith("caret "):
        document.place_caret(int(line.removeprefix("caret ")))
    elif line == "insertions":
        target_options.announce(str(document.insertions))
        return
    elif line == "leave":
        document.focus(False)
        document.caret = -1
        other.focus()
    elif line == "read":
        target_options.announce(text_of(other.text))
        return
    elif line == "quit":
        loop.quit()
        return
    target_options.announce("done")


bus = accessibility_bus.connect()
root = Root(bus, ROOT)
document = Document("/org/a11y/atspi/accessible/document", options.text)
other = Document("/org/a11y/atspi/accessible/other", "")
loop = GLib.MainLoop()
target_options.publish(options, options.text)
readable = target_options.read_commands(command)
GLib.io_add_watch(0, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, lambda *_: readable())
document.focus()
target_options.announce("ready")
loop.run()
