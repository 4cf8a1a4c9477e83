#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Measures texts with the toolkit's own font metrics.

Reads a JSON list of [text, points, weight, width] from standard input. `points` is null for the
desktop's default size. Writes a JSON list of [width, height] in device-independent pixels: the size
of each text when it is broken into lines of the given width.
"""

import json
import sys

from PyQt6.QtCore import QRect, Qt
from PyQt6.QtGui import QFont, QFontMetrics
from PyQt6.QtWidgets import QApplication

# Points of the user interface are 1/96 inch, points of the toolkit 1/72 inch.
TOOLKIT_POINTS = 72 / 96
UNLIMITED_HEIGHT = 100000

application = QApplication(sys.argv[:1])


def measured(text, points, weight, width):
    font = QFont(application.font())
    if points is not None:
        font.setPointSizeF(points * TOOLKIT_POINTS)
    font.setWeight(QFont.Weight[weight])
    size = QFontMetrics(font).boundingRect(
        QRect(0, 0, int(width), UNLIMITED_HEIGHT), Qt.TextFlag.TextWordWrap, text).size()
    return size.width(), size.height()


json.dump([measured(*line) for line in json.load(sys.stdin)], sys.stdout)
