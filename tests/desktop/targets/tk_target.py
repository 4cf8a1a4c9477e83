#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A Tk window with one text widget. Prints "ready" whenever the widget gets the focus.

The commands on standard input are "sleep", "work" and "quit"; see target_options.py.
"""

import tkinter

import target_options

options = target_options.parse("A Tk window with one text widget.")
window = tkinter.Tk(className="target")
window.title(options.title)
widget = tkinter.Text(window, width=60, height=8)
widget.pack()


def text():
    return widget.get("1.0", "end-1c")


def changed(_event):
    # The event comes at every change of the flag, also at this one.
    if widget.edit_modified():
        widget.edit_modified(False)
        target_options.publish(options, text())


def command(line):
    if line == "quit":
        window.destroy()
    else:
        target_options.announce("done")


widget.insert("1.0", options.text)
widget.edit_modified(False)
target_options.publish(options, text())
widget.bind("<<Modified>>", changed)
widget.bind("<FocusIn>", lambda _event: target_options.announce("ready"))
readable = target_options.read_commands(command)
window.createfilehandler(0, tkinter.READABLE,
                         lambda *_: readable() or window.deletefilehandler(0))
widget.focus_set()
window.mainloop()
