#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A Tk window with one text area. Prints "ready" when the area gets the focus.

The commands on standard input are "publish", "clear" and "quit" of gtk3_target.py.
"""

import tkinter

import target_options

options = target_options.parse("A Tk window with one text area.")
window = tkinter.Tk()
window.title(options.title)
area = tkinter.Text(window, width=60, height=8)
area.insert("1.0", options.text)
area.pack(fill="both", expand=True)


def text():
    return area.get("1.0", "end-1c")


def length():
    return len(text())


def changed(_event):
    # The flag is one for all changes. Only a cleared flag reports the next change.
    if area.edit_modified():
        area.edit_modified(False)
        target_options.on_change(options, text, length)
        if options.journal:
            # Tk draws when it has nothing else to do, and what comes after that is after the drawing.
            window.after_idle(lambda: window.after_idle(options.journal.painted))


def command(line):
    if line == "publish":
        target_options.publish(options, text())
    elif line == "clear":
        area.delete("1.0", "end")
    elif line == "quit":
        window.destroy()
        return
    target_options.announce("done")


def read(*_):
    if not readable():
        window.deletefilehandler(0)


area.edit_modified(False)
area.bind("<<Modified>>", changed)
area.bind("<FocusIn>", lambda _event: target_options.announce("ready"))
target_options.publish(options, text())
readable = target_options.read_commands(command)
window.createfilehandler(0, tkinter.READABLE, read)
area.focus_set()
window.mainloop()
