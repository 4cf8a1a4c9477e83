#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Shows which keys are down and what is spoken, and takes pictures of the whole screen.

usage: stage.py FOLDER LEFT TOP WIDTH HEIGHT

Commands come as JSON lines on standard input; each is answered with a line "done".

    {"do": "speak", "text": TEXT, "levels": [0 to 1, ...], "interval": SECONDS}   from now on
    {"do": "record"}        takes pictures until "stop"
    {"do": "stop"}          writes FOLDER/frames.json: the pictures and how long each was seen

A key is drawn as pressed while a keyboard of the X server says that the key is down.
"""

import ctypes
import json
import pathlib
import sys
import time

from PyQt6.QtCore import QPointF, QRectF, QSocketNotifier, Qt, QTimer
from PyQt6.QtGui import QColor, QFont, QPainter, QPainterPath, QPen
from PyQt6.QtWidgets import QApplication, QWidget

# In milliseconds.
PICTURE_INTERVAL = 100
DRAWING_INTERVAL = 40
KEYS = (("Alt", "Alt_L", 64), ("Space", "space", 150))
BACKGROUND, CAP, PRESSED = QColor("#1d2733"), QColor("#3a4858"), QColor("#e5484d")
TEXT, WAVE, SILENCE = QColor("#f4f6f8"), QColor("#7fc8ff"), QColor("#4a5a6c")
MARGIN, CAP_HEIGHT, BAR = 14, 40, 4


class DeviceInfo(ctypes.Structure):
    _fields_ = [("id", ctypes.c_ulong), ("type", ctypes.c_ulong), ("name", ctypes.c_char_p),
                ("classes", ctypes.c_int), ("use", ctypes.c_int), ("first_class", ctypes.c_void_p)]


class DeviceState(ctypes.Structure):
    _fields_ = [("id", ctypes.c_ulong), ("classes", ctypes.c_int),
                ("first_class", ctypes.POINTER(ctypes.c_ubyte))]


class Keyboards:
    """The keyboards of the X server. Each tells its own keys: a hotkey may be taken from a keyboard
    before the server's common keyboard sees the key."""

    KEYBOARD, KEY_CLASS = 3, 0
    # The class, its length and the number of keys.
    HEADER_BYTES = 4

    def __init__(self):
        self._xi, xlib = ctypes.CDLL("libXi.so.6"), ctypes.CDLL("libX11.so.6")
        xlib.XOpenDisplay.restype = ctypes.c_void_p
        xlib.XStringToKeysym.restype = ctypes.c_ulong
        self._xi.XListInputDevices.restype = ctypes.POINTER(DeviceInfo)
        self._xi.XOpenDevice.restype = ctypes.c_void_p
        self._xi.XQueryDeviceState.restype = ctypes.POINTER(DeviceState)
        self._display = ctypes.c_void_p(xlib.XOpenDisplay(None))
        self._codes = {name: xlib.XKeysymToKeycode(
            self._display, ctypes.c_ulong(xlib.XStringToKeysym(name.encode()))) for _, name, _ in KEYS}
        count = ctypes.c_int()
        devices = self._xi.XListInputDevices(self._display, ctypes.byref(count))
        self._keyboards = [
            ctypes.c_void_p(self._xi.XOpenDevice(self._display, ctypes.c_ulong(device.id)))
            for device in devices[:count.value] if device.use == self.KEYBOARD]

    def pressed(self):
        """The names of the pressed keys among KEYS."""
        states = [self._keys_of(keyboard) for keyboard in self._keyboards]
        return {name for name, code in self._codes.items()
                if any(keys[code // 8] >> code % 8 & 1 for keys in states)}

    def _keys_of(self, keyboard):
        """One bit for each key of a keyboard."""
        state = self._xi.XQueryDeviceState(self._display, keyboard)
        keys, start = bytes(32), 0
        for _ in range(state.contents.classes):
            data = state.contents.first_class
            if data[start] == self.KEY_CLASS:
                keys = bytes(data[start + self.HEADER_BYTES:start + self.HEADER_BYTES + len(keys)])
            start += data[start + 1]
        self._xi.XFreeDeviceState(state)
        return keys


class Speech:
    """A sentence that is being played."""

    def __init__(self, text="", levels=(), interval=1.0):
        self.text, self._levels, self._interval = text, levels, interval
        self._begin = time.monotonic()

    def levels(self, count):
        """The latest `count` levels, the newest last. Before and after the sentence there is silence."""
        now = int((time.monotonic() - self._begin) / self._interval)
        return [self._levels[i] if 0 <= i < len(self._levels) else 0
                for i in range(now - count + 1, now + 1)]


class Stage(QWidget):
    """A strip that never takes the keyboard."""

    def __init__(self, place):
        super().__init__(None, Qt.WindowType.FramelessWindowHint
                         | Qt.WindowType.X11BypassWindowManagerHint
                         | Qt.WindowType.WindowDoesNotAcceptFocus)
        self.setAttribute(Qt.WidgetAttribute.WA_ShowWithoutActivating)
        self.setGeometry(*place)
        self.setFont(QFont("Cantarell", 13))
        self._keyboards = Keyboards()
        self.speech = Speech()
        self._timer = QTimer(self)
        self._timer.timeout.connect(self.update)
        self._timer.start(DRAWING_INTERVAL)

    def paintEvent(self, _):
        painter = QPainter(self)
        painter.setRenderHint(QPainter.RenderHint.Antialiasing)
        painter.fillRect(self.rect(), BACKGROUND)
        left = self._paint_keys(painter)
        self._paint_speech(painter, QRectF(left, MARGIN, self.width() - left - MARGIN,
                                           self.height() - 2 * MARGIN))

    def _paint_keys(self, painter):
        """Draws the keys; returns where they end."""
        pressed = self._keyboards.pressed()
        left, top = MARGIN, (self.height() - CAP_HEIGHT) / 2
        for title, name, width in KEYS:
            cap = QRectF(left, top + (2 if name in pressed else 0), width, CAP_HEIGHT)
            shape = QPainterPath()
            shape.addRoundedRect(cap, 7, 7)
            painter.fillPath(shape, PRESSED if name in pressed else CAP)
            painter.setPen(TEXT)
            painter.drawText(cap, Qt.AlignmentFlag.AlignCenter, title)
            left += width + 8
        return left + MARGIN

    def _paint_speech(self, painter, place):
        wave, words = QRectF(place), QRectF(place)
        wave.setHeight(place.height() / 2)
        words.setTop(wave.bottom())
        count = int(wave.width() // (BAR + 2))
        middle = wave.center().y()
        for i, level in enumerate(self.speech.levels(count)):
            half = max(1.0, level * wave.height() / 2)
            x = wave.left() + i * (BAR + 2) + BAR / 2
            painter.setPen(QPen(WAVE if level > 0.03 else SILENCE, BAR, cap=Qt.PenCapStyle.RoundCap))
            painter.drawLine(QPointF(x, middle - half), QPointF(x, middle + half))
        painter.setPen(TEXT)
        painter.drawText(words, Qt.AlignmentFlag.AlignVCenter | Qt.AlignmentFlag.AlignLeft,
                         f"“{self.speech.text}”" if self.speech.text else "")


class Recorder:
    """Takes pictures of the screen; equal ones that follow each other are one picture."""

    def __init__(self, folder):
        self._folder = folder
        self._frames = []
        self._last = None
        self._timer = QTimer()
        self._timer.timeout.connect(self._take)

    def record(self):
        self._take()
        self._timer.start(PICTURE_INTERVAL)

    def stop(self):
        self._timer.stop()
        ends = [begin for _, begin in self._frames[1:]] + [time.monotonic()]
        (self._folder / "frames.json").write_text(json.dumps(
            [(name, end - begin) for (name, begin), end in zip(self._frames, ends, strict=True)]))

    def _take(self):
        now = time.monotonic()
        picture = QApplication.primaryScreen().grabWindow(0).toImage()
        if picture == self._last:
            return
        self._last = picture
        name = f"{len(self._frames):04}.ppm"
        if not picture.save(str(self._folder / name)):
            sys.exit(f"{name} cannot be written")
        self._frames.append((name, now))


class Commands:
    """Carries out the lines on standard input."""

    def __init__(self, stage, recorder):
        self._stage, self._recorder = stage, recorder
        self._notifier = QSocketNotifier(sys.stdin.fileno(), QSocketNotifier.Type.Read)
        self._notifier.activated.connect(self._read)

    def _read(self):
        line = sys.stdin.buffer.raw.readline()
        if not line:
            QApplication.quit()
            return
        command = json.loads(line)
        {"speak": self._speak, "record": self._recorder.record, "stop": self._recorder.stop}[
            command.pop("do")](**command)
        print("done", flush=True)

    def _speak(self, text, levels, interval):
        self._stage.speech = Speech(text, levels, interval)


def main():
    application = QApplication(sys.argv[:1])
    folder = pathlib.Path(sys.argv[1])
    stage = Stage(tuple(map(int, sys.argv[2:6])))
    stage.show()
    commands = Commands(stage, Recorder(folder))
    print("done", flush=True)
    application.exec()
    del commands


if __name__ == "__main__":
    main()
