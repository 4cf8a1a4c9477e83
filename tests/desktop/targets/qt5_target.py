#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The window of qt6_target.py with Qt 5. What the target uses has the same names in both versions."""

import pathlib
import runpy
import sys

import PyQt5
from PyQt5 import QtCore, QtWidgets

sys.modules |= {"PyQt6": PyQt5, "PyQt6.QtCore": QtCore, "PyQt6.QtWidgets": QtWidgets}
runpy.run_path(str(pathlib.Path(__file__).with_name("qt6_target.py")), run_name="__main__")
