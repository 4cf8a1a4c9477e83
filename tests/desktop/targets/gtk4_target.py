#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A GTK 4 window with one text widget. Prints "ready" whenever the widget gets the focus. The first
"ready" waits until the widget is on the accessibility bus, which GTK 4 reaches later than the focus.

The commands on standard input are those of gtk3_target.py, without "number".
"""

import os
import threading
import time

# Without a graphics processor the default renderer blocks for half a second at the first text of a
# new script.
os.environ.setdefault("GSK_RENDERER", "cairo")

import gi  # noqa: E402

gi.require_version("Gdk", "4.0")
gi.require_version("Gtk", "4.0")
from gi.repository import Gdk, Gio, GLib, Gtk  # noqa: E402

import target_options  # noqa: E402

options = target_options.parse("A GTK 4 window with one text widget.")
application = Gtk.Application(flags=Gio.ApplicationFlags.NON_UNIQUE)


def text_of(widget):
    if options.widget == "entry":
        return widget.get_text()
    buffer = widget.get_buffer()
    return buffer.get_text(buffer.get_start_iter(), buffer.get_end_iter(), True)


def length_of(widget):
    return (widget.get_text_length() if options.widget == "entry"
            else widget.get_buffer().get_char_count())


def select(widget, first, last):
    if options.widget == "entry":
        widget.select_region(first, last)
    else:
        buffer = widget.get_buffer()
        buffer.select_range(buffer.get_iter_at_offset(last), buffer.get_iter_at_offset(first))


def call(connection, owner, path, interface, member, argument=None):
    return connection.call_sync(owner, path, interface, member, argument, None,
                                Gio.DBusCallFlags.NONE, 1000, None).unpack()


def focused_below(connection, owner, path):
    interface = "org.a11y.atspi.Accessible"
    if call(connection, owner, path, interface, "GetState")[0][0] >> 12 & 1:
        return True
    children = call(connection, owner, path, interface, "GetChildren")[0]
    return any(focused_below(connection, *child) for child in children)


def is_reachable(connection):
    """Whether the focused widget can be found from the registry."""
    for owner, path in call(connection, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root",
                            "org.a11y.atspi.Accessible", "GetChildren")[0]:
        process = call(connection, "org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                       "GetConnectionUnixProcessID", GLib.Variant("(s)", (owner,)))[0]
        if process == os.getpid():
            return focused_below(connection, owner, path)
    return False


def wait_until_reachable():
    """Runs in its own thread, because the main loop has to answer the calls."""
    try:
        session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
        address = call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
            Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
    except GLib.Error:
        return  # Without the bus there is nothing to wait for.
    deadline = time.monotonic() + 10
    while time.monotonic() < deadline:
        try:
            if is_reachable(connection):
                return
        except GLib.Error:
            pass  # Parts of the window do not exist yet.
        time.sleep(0.01)


def menu_bar():
    menu = Gio.Menu()
    file_menu = Gio.Menu()
    file_menu.append("_Quit", "app.quit")
    menu.append_submenu("_File", file_menu)
    action = Gio.SimpleAction.new("quit", None)
    action.connect("activate", lambda *_: application.quit())
    application.add_action(action)
    return Gtk.PopoverMenuBar.new_from_model(menu)


def activate(_application):
    window = Gtk.ApplicationWindow(application=application, title=options.title)
    window.set_default_size(480, 160)
    typed_keys = target_options.TypedKeys()
    # In the capture phase, because the text widget does not pass keys on.
    keys = Gtk.EventControllerKey(propagation_phase=Gtk.PropagationPhase.CAPTURE)
    keys.connect("key-pressed",
                 lambda _, symbol, *_rest: typed_keys.press(Gdk.keyval_to_unicode(symbol)))
    window.add_controller(keys)
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=6)
    window.set_child(box)
    if options.menu_bar:
        box.append(menu_bar())
    if options.widget == "entry":
        widget = Gtk.Entry()
        widget.set_text(options.text)
        source = widget
        focusable = widget.get_delegate()
    else:
        widget = Gtk.TextView()
        source = widget.get_buffer()
        source.set_text(options.text)
        focusable = widget
    widget.set_editable(not options.readonly)
    widget.set_vexpand(True)
    box.append(widget)
    button = Gtk.Button(label="Button")
    box.append(button)

    was_reached = []

    def settle():
        if options.selection:
            select(widget, *options.selection)
            options.selection = None
        target_options.announce("ready")
        return False

    def reach():
        wait_until_reachable()
        GLib.idle_add(settle)

    def focused(*_):
        # The entry selects everything when it gets the focus, so settling comes right after.
        if was_reached:
            GLib.idle_add(settle)
        else:
            was_reached.append(True)
            threading.Thread(target=reach, daemon=True).start()

    def command(line):
        name, _, argument = line.partition(" ")
        if name == "caret":
            select(widget, int(argument), int(argument))
        elif name == "select":
            select(widget, *[int(part) for part in argument.split(":")])
        elif name == "button":
            button.grab_focus()
        elif name == "nothing":
            window.set_focus(None)
        elif name == "widget":
            widget.grab_focus()
        elif name == "keys":
            typed_keys.announce()
        elif name == "publish":
            target_options.publish(options, text_of(widget))
        elif name == "clear":
            source.set_text("")
        elif name == "quit":
            application.quit()
            return
        target_options.announce("done")

    source.connect("changed", lambda *_: target_options.on_change(
        options, lambda: text_of(widget), lambda: length_of(widget)))
    if options.journal:
        window.connect("realize", lambda *_: window.get_frame_clock().connect(
            "after-paint", lambda *_: options.journal.painted()))
    target_options.publish(options, text_of(widget))
    controller = Gtk.EventControllerFocus()
    controller.connect("enter", focused)
    (button if options.button else focusable).add_controller(controller)
    readable = target_options.read_commands(command)
    GLib.io_add_watch(0, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, lambda *_: readable())
    window.present()
    (button if options.button else widget).grab_focus()


application.connect("activate", activate)
application.run(None)
