#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A Qt 5 window with one text widget. Prints "ready" whenever the widget gets the focus.

The commands on standard input are "sleep", "work" and "quit"; see target_options.py.
"""

import sys

from PyQt5.QtCore import QSocketNotifier
from PyQt5.QtWidgets import QApplication, QPlainTextEdit

import target_options

options = target_options.parse("A Qt 5 window with one text widget.")
application = QApplication(sys.argv[:1])


class Area(QPlainTextEdit):
    def focusInEvent(self, event):
        super().focusInEvent(event)
        target_options.announce("ready")


def command(line):
    if line == "quit":
        application.quit()
    else:
        target_options.announce("done")


widget = Area()
widget.setWindowTitle(options.title)
widget.setPlainText(options.text)
widget.textChanged.connect(lambda: target_options.publish(options, widget.toPlainText()))
target_options.publish(options, widget.toPlainText())
readable = target_options.read_commands(command)
notifier = QSocketNotifier(0, QSocketNotifier.Read)
notifier.activated.connect(lambda *_: notifier.setEnabled(readable()))
widget.show()
sys.exit(application.exec())
