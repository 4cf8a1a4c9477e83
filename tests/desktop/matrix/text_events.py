#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Keeps a journal of a text in another program, as a screen reader, by the events of the text.

usage: text_events.py ADDRESS NAME PATH JOURNAL

ADDRESS is that of the accessibility bus, NAME and PATH are those of the text. Prints "ready" when the
events come.
"""

import pathlib
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

sys.path.append(str(pathlib.Path(__file__).parents[1] / "targets"))
from journal import Journal  # noqa: E402


def main():
    bus = Gio.DBusConnection.new_for_address_sync(
        sys.argv[1], Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
        | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
    journal = Journal(sys.argv[4])
    length = 0

    def changed(_bus, _sender, _path, _interface, _signal, arguments):
        nonlocal length
        kind, _, _, text = arguments.unpack()[:4]
        if isinstance(text, str):
            size = len(text)
            # Qt 5 reports the end of the line as deleted when a text is pasted into an empty one.
            length = max(0, length + (size if kind.startswith("insert") else -size))
            journal.changed(length)

    bus.signal_subscribe(sys.argv[2], "org.a11y.atspi.Event.Object", "TextChanged", sys.argv[3],
                         None, Gio.DBusSignalFlags.NONE, changed)
    # Some programs report nothing before somebody has asked for it.
    bus.call_sync("org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
                  "RegisterEvent", GLib.Variant("(s)", ("object:text-changed",)), None,
                  Gio.DBusCallFlags.NONE, 5000, None)
    print("ready", flush=True)
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
