#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A Qt 6 window with one text widget. Prints "ready" whenever the widget gets the focus.

The commands on standard input are those of gtk3_target.py, without "number".
"""

import sys

from PyQt6.QtCore import QSocketNotifier, QTimer
from PyQt6.QtWidgets import (QApplication, QLineEdit, QMainWindow, QPlainTextEdit, QPushButton,
                             QVBoxLayout, QWidget)

import target_options

options = target_options.parse("A Qt 6 window with one text widget.")
application = QApplication(sys.argv[:1])
typed_keys = target_options.TypedKeys()


class Window(QMainWindow):
    def keyPressEvent(self, event):
        # A widget with the focus passes on what it does not know.
        typed_keys.press(event.text(), is_silent=event.key() == 0)
        super().keyPressEvent(event)


window = Window()
window.setWindowTitle(options.title)
window.resize(480, 160)
central = QWidget()
layout = QVBoxLayout(central)
window.setCentralWidget(central)
if options.menu_bar:
    window.menuBar().addMenu("&File").addAction("&Quit", application.quit)


def focused():
    def settle():
        if options.selection:
            select(*options.selection)
            options.selection = None
        target_options.announce("ready")

    # The line selects everything when it gets the focus by the keyboard, so this comes right after.
    QTimer.singleShot(0, settle)


def painted():
    if options.journal:
        options.journal.painted()


class Line(QLineEdit):
    def paintEvent(self, event):
        super().paintEvent(event)
        painted()

    def focusInEvent(self, event):
        super().focusInEvent(event)
        focused()

    def keyPressEvent(self, event):
        typed_keys.press(event.text())
        super().keyPressEvent(event)


class Area(QPlainTextEdit):
    def paintEvent(self, event):
        super().paintEvent(event)
        painted()

    def focusInEvent(self, event):
        super().focusInEvent(event)
        focused()

    def keyPressEvent(self, event):
        typed_keys.press(event.text())
        super().keyPressEvent(event)


class Button(QPushButton):
    def focusInEvent(self, event):
        super().focusInEvent(event)
        if options.button:
            focused()


def units(character_offset):
    """Converts a character offset to UTF-16 units, in which Qt counts."""
    return len(text()[:character_offset].encode("utf-16-le")) // 2


def text():
    if options.widget == "entry":
        return widget.text()
    # The plain text has blanks in the place of no-break spaces.
    return widget.document().toRawText().replace("\u2028", "\n").replace("\u2029", "\n")


def length():
    """The length in UTF-16 units."""
    if options.widget == "entry":
        return len(text().encode("utf-16-le")) // 2
    return widget.document().characterCount() - 1


def select(first, last):
    first, last = units(first), units(last)
    if options.widget == "entry":
        widget.setCursorPosition(first)
        if last > first:
            widget.setSelection(first, last - first)
    else:
        cursor = widget.textCursor()
        cursor.setPosition(first)
        cursor.setPosition(last, cursor.MoveMode.KeepAnchor)
        widget.setTextCursor(cursor)


def command(line):
    name, _, argument = line.partition(" ")
    if name == "caret":
        select(int(argument), int(argument))
    elif name == "select":
        select(*[int(part) for part in argument.split(":")])
    elif name == "button":
        button.setFocus()
    elif name == "nothing":
        widget.clearFocus()
    elif name == "widget":
        widget.setFocus()
    elif name == "keys":
        typed_keys.announce()
    elif name == "publish":
        target_options.publish(options, text())
    elif name == "clear":
        widget.clear()
    elif name == "quit":
        application.quit()
        return
    target_options.announce("done")


if options.widget == "entry":
    widget = Line()
    if options.max_length:
        widget.setMaxLength(options.max_length)
    widget.setText(options.text)
else:
    widget = Area()
    widget.setPlainText(options.text)
widget.setReadOnly(options.readonly)
widget.textChanged.connect(lambda *_: target_options.on_change(options, text, length))
target_options.publish(options, text())
button = Button("Button")
layout.addWidget(widget)
layout.addWidget(button)
(button if options.button else widget).setFocus()
readable = target_options.read_commands(command)
notifier = QSocketNotifier(0, QSocketNotifier.Type.Read)
notifier.activated.connect(lambda *_: notifier.setEnabled(readable()))
window.show()
sys.exit(application.exec())
