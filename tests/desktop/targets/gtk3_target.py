#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A GTK 3 window with one text widget. Prints "ready" whenever the widget gets the focus.

Commands on standard input: "caret N" places the caret, "select A:B" selects, "button" moves the
focus to a button, "number" to a field for numbers, "nothing" takes the focus away from every widget,
"widget" moves the focus back, "keys" prints "keys N M" with the numbers of typed keys and of keys that
stand for nothing (Qt 6 alone counts those), "publish" writes the text to the file, "clear" deletes
the text, "quit" ends the program. Every command except "quit" prints "done".

The signal USR1 opens another window with a text of its own, in a file with the suffix ".second".
"""

import signal

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402

import target_options  # noqa: E402

options = target_options.parse("A GTK 3 window with one text widget.")

window = Gtk.Window(title=options.title)
window.set_default_size(480, 160)
window.connect("destroy", Gtk.main_quit)
typed_keys = target_options.TypedKeys()
window.connect("key-press-event",
               lambda _, event: typed_keys.press(Gdk.keyval_to_unicode(event.keyval)))
box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=6)
window.add(box)

if options.menu_bar:
    bar = Gtk.MenuBar()
    item = Gtk.MenuItem.new_with_mnemonic("_File")
    menu = Gtk.Menu()
    quit_item = Gtk.MenuItem.new_with_mnemonic("_Quit")
    quit_item.connect("activate", Gtk.main_quit)
    menu.append(quit_item)
    item.set_submenu(menu)
    bar.append(item)
    box.pack_start(bar, False, False, 0)

if options.widget == "entry":
    widget = Gtk.Entry()
    source = widget
    widget.set_text(options.text)
    widget.set_editable(not options.readonly)
    widget.set_visibility(not options.password)
else:
    widget = Gtk.TextView()
    source = widget.get_buffer()
    source.set_text(options.text)
    widget.set_editable(not options.readonly)
box.pack_start(widget, True, True, 0)
button = Gtk.Button(label="Button")
box.pack_start(button, False, False, 0)
number = Gtk.SpinButton.new_with_range(0, 100, 1)
box.pack_start(number, False, False, 0)


def text():
    if options.widget == "entry":
        return widget.get_text()
    return source.get_text(source.get_start_iter(), source.get_end_iter(), True)


def length():
    return widget.get_text_length() if options.widget == "entry" else source.get_char_count()


def select(first, last):
    if options.widget == "entry":
        widget.select_region(first, last)
    else:
        source.select_range(source.get_iter_at_offset(last), source.get_iter_at_offset(first))


def focused(_widget, _event):
    if options.selection:
        # The entry selects everything when it gets the focus, so this comes right after.
        first, last = options.selection
        options.selection = None
        GLib.idle_add(lambda: (select(first, last), target_options.announce("ready")) and False)
    else:
        GLib.idle_add(lambda: target_options.announce("ready") or False)
    return False


def command(line):
    name, _, argument = line.partition(" ")
    if name == "caret":
        select(int(argument), int(argument))
    elif name == "select":
        select(*[int(part) for part in argument.split(":")])
    elif name == "button":
        button.grab_focus()
    elif name == "number":
        number.grab_focus()
    elif name == "nothing":
        window.set_focus(None)
    elif name == "widget":
        widget.grab_focus()
    elif name == "keys":
        typed_keys.announce()
    elif name == "publish":
        target_options.publish(options, text())
    elif name == "clear":
        source.set_text("")
    elif name == "quit":
        Gtk.main_quit()
        return
    target_options.announce("done")


def open_second_window():
    second = Gtk.Window(title=options.title + " 2")
    entry = Gtk.Entry()
    entry.connect("changed", lambda _: target_options.publish(options, entry.get_text(), ".second"))
    # In front with the keyboard, and not just on the screen.
    entry.connect("focus-in-event",
                  lambda *_: target_options.publish(options, entry.get_text(), ".second"))
    second.add(entry)
    second.show_all()
    return True


GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGUSR1, open_second_window)
source.connect("changed", lambda *_: target_options.on_change(options, text, length))
if options.journal:
    window.connect("realize", lambda *_: window.get_window().get_frame_clock().connect(
        "after-paint", lambda *_: options.journal.painted()))
target_options.publish(options, text())
if options.button:
    button.connect("focus-in-event", focused)
    button.grab_focus()
else:
    widget.connect("focus-in-event", focused)
    widget.grab_focus()
readable = target_options.read_commands(command)
GLib.io_add_watch(0, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, lambda *_: readable())
window.show_all()
Gtk.main()
