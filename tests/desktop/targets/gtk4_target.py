#!/usr/bin/python3
"""A GTK 4 window with one text widget. Prints "ready" whenever the widget gets the focus.

The commands on standard input are those of gtk3_target.py.
"""

import gi

gi.require_version("Gtk", "4.0")
from gi.repository import Gio, GLib, Gtk  # noqa: E402

import target_options  # noqa: E402

options = target_options.parse("A GTK 4 window with one text widget.")
application = Gtk.Application(flags=Gio.ApplicationFlags.NON_UNIQUE)


def text_of(widget):
    if options.widget == "entry":
        return widget.get_text()
    buffer = widget.get_buffer()
    return buffer.get_text(buffer.get_start_iter(), buffer.get_end_iter(), True)


def select(widget, first, last):
    if options.widget == "entry":
        widget.select_region(first, last)
    else:
        buffer = widget.get_buffer()
        buffer.select_range(buffer.get_iter_at_offset(last), buffer.get_iter_at_offset(first))


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

    def focused(*_):
        def settle():
            if options.selection:
                select(widget, *options.selection)
                options.selection = None
            target_options.announce("ready")
            return False

        # The entry selects everything when it gets the focus, so this comes right after.
        GLib.idle_add(settle)

    def command(line):
        name, _, argument = line.partition(" ")
        if name == "caret":
            select(widget, int(argument), int(argument))
        elif name == "select":
            select(widget, *[int(part) for part in argument.split(":")])
        elif name == "button":
            button.grab_focus()
        elif name == "widget":
            widget.grab_focus()
        elif name == "quit":
            application.quit()
            return
        target_options.announce("done")

    source.connect("changed", lambda *_: target_options.publish(options, text_of(widget)))
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
