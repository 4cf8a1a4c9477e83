#!/usr/bin/python3
"""Tells how much place texts need on this desktop, by the toolkit's own measure.

Reads a JSON list of texts, each [text, points or null for the desktop's size, weight, width], from
standard input; writes a list of [width, height] in device-independent pixels: the text broken into
lines of that width.
"""

import json
import sys

from PyQt6.QtCore import QRect, Qt
from PyQt6.QtGui import QFont, QFontMetrics
from PyQt6.QtWidgets import QApplication

# Of a point of the user interface, 96 to the inch, in those of the toolkit, 72 to the inch.
TOOLKIT_POINTS = 72 / 96
ENDLESS = 100000

application = QApplication(sys.argv[:1])


def measured(text, points, weight, width):
    font = QFont(application.font())
    if points is not None:
        font.setPointSizeF(points * TOOLKIT_POINTS)
    font.setWeight(QFont.Weight[weight])
    size = QFontMetrics(font).boundingRect(
        QRect(0, 0, int(width), ENDLESS), Qt.TextFlag.TextWordWrap, text).size()
    return size.width(), size.height()


json.dump([measured(*line) for line in json.load(sys.stdin)], sys.stdout)
