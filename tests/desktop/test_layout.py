#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The layout of all windows: no part overlaps another, and every text fits its part."""

import itertools
import json
import pathlib
import sys
import unittest

from accessible import ScreenReader
from appearance import set_text_scale
from desktop import Desktop, wait_for
from dictation_test import BINARIES
from setup_window import RESTART, pixels_per_unit
from window_scenarios import AN_HOUR, TEN_MINUTES, WindowScenarios

MEASURE_TEXT = pathlib.Path(__file__).parent / "measure_text.py"
# The font sizes in points and the weights of the texts, from top to bottom. None is the desktop's
# default size.
SETUP_LABELS = [(24, "Bold"), (11, "Normal"), (13, "Normal"), (12, "Normal"),
                (13, "Medium"), (12, "Normal"), (13, "Medium"), (12, "Normal"), (13, "Medium"),
                (12, "Normal"), (11, "Normal")]
PROMPT_LABELS = [(None, "Bold"), (None, "Normal")]
CALL_LABELS = [(22, "Bold"), (13, "Normal")]
# The visible titles. A button's name for screen readers may differ.
SETUP_BUTTONS = [
    ("Save", 13, "Normal"), ("Grant", 13, "Normal"), ("Grant", 13, "Normal"),
    ("Launch at login (recommended — keeps the tray icon always available)", 13, "Normal"),
    (RESTART, 13, "Normal")]
PROMPT_BUTTONS = [("Save", None, "Normal"), ("Cancel", None, "Normal")]
CALL_BUTTONS = [("Visit tarvik.example", 13, "DemiBold"), ("Maybe later", 13, "Normal"),
                ("Don't show again", 11, "Normal")]
# In pixels: positions are rounded where points are not whole pixels.
TOLERANCE = 1


def overlap(first, second):
    return all(first[i] < second[i] + second[i + 2] and second[i] < first[i] + first[i + 2]
               for i in (0, 1))


def is_inside(inner, outer):
    return all(outer[i] <= inner[i] and inner[i] + inner[i + 2] <= outer[i] + outer[i + 2]
               for i in (0, 1))


class Layout:
    @classmethod
    def setUpClass(cls):
        size = f"{1280 * cls.scale}x{800 * cls.scale}"
        cls.desktop = cls.enterClassContext(Desktop(wm=True, a11y=True, audio=True, size=size))
        set_text_scale(cls.desktop, cls.scale)
        cls.scenarios = cls.enterClassContext(
            WindowScenarios(cls.desktop, BINARIES, scale=cls.scale))

    def content_with(self, text):
        reader = ScreenReader(self.desktop)
        self.addCleanup(reader.close)
        return reader.window_with(text)

    def hidden_parts(self, content):
        """Checks that no part overlaps another; returns the names of the parts out of sight."""
        # Each name and each place is a call to the application, so it is asked for once.
        places = [(part.name, part.extents) for part in content.descendants if not part.children]
        parts = [(name, place) for name, place in places if min(place[2:]) > 0]
        self.assertGreater(len(parts), 5)
        for (first, first_place), (second, second_place) in itertools.combinations(parts, 2):
            self.assertFalse(overlap(first_place, second_place), f"{first!r} and {second!r}")
        whole = content.extents
        return {name for name, place in parts if name and not is_inside(place, whole)}

    def check_texts(self, window, content, label_fonts, buttons):
        """Checks that each text, measured in its font, fits its part."""
        parts = [part for part in content.descendants if part.role == "label"]
        texts = [(part.name, *font) for part, font in zip(parts, label_fonts, strict=True)] + buttons
        parts += [part for part in content.controls if part.role in ("push button", "check box")]
        factor = pixels_per_unit(self.desktop, window, content) / self.scale
        places = [[side * factor for side in part.extents[2:]] for part in parts]
        sizes = json.loads(self.desktop.run([sys.executable, MEASURE_TEXT], input=json.dumps(
            [(*text, width) for text, (width, _) in zip(texts, places, strict=True)])))
        for text, place, size in zip(texts, places, sizes, strict=True):
            self.assertLessEqual(size[0], place[0] + TOLERANCE, text)
            self.assertLessEqual(size[1], place[1] + TOLERANCE, text)

    def test_the_setup_window(self):
        with self.scenarios.setup() as setup:
            self.assertEqual(self.hidden_parts(setup.content), set())
            self.check_texts(setup.window, setup.content, SETUP_LABELS, SETUP_BUTTONS)

    def test_the_setup_window_at_its_smallest(self):
        with self.scenarios.setup() as setup:
            self.scenarios.shrink(setup)
            below = self.hidden_parts(setup.content)
            self.check_texts(setup.window, setup.content, SETUP_LABELS, SETUP_BUTTONS)
            # Shift+Tab leads from the first control to the last, which scrolls into sight.
            self.scenarios.keyboard.press("shift+Tab")
            wait_for(lambda: setup.button(RESTART).has("focused"), "the focus on the last control")
            wait_for(lambda: not below & self.hidden_parts(setup.content), "all of the lower part")

    def test_the_question_for_the_key(self):
        with self.scenarios.prompt() as prompt:
            content = self.content_with("Cancel")
            self.assertEqual(self.hidden_parts(content), set())
            self.check_texts(prompt, content, PROMPT_LABELS, PROMPT_BUTTONS)

    def test_both_calls_to_action(self):
        for total in (TEN_MINUTES, AN_HOUR):
            with self.subTest(total=total), self.scenarios.call_to_action(total) as call:
                content = self.content_with("Maybe later")
                self.assertEqual(self.hidden_parts(content), set())
                self.check_texts(call, content, CALL_LABELS, CALL_BUTTONS)


class NormalText(Layout, unittest.TestCase):
    scale = 1


class DoubleSizeText(Layout, unittest.TestCase):
    scale = 2


class TripleSizeText(Layout, unittest.TestCase):
    scale = 3


class DoubleSizeTextOnASmallScreen(unittest.TestCase):
    def test_the_setup_window_fits_and_a_tab_shows_the_key_field(self):
        width, height = 1366, 768
        desktop = self.enterContext(Desktop(wm=True, a11y=True, audio=True, size=f"{width}x{height}"))
        set_text_scale(desktop, 2)
        scenarios = self.enterContext(WindowScenarios(desktop, BINARIES, scale=2))
        with scenarios.setup() as setup:
            wait_for(lambda: is_inside(setup.window.frame, (0, 0, width, height)),
                     "the whole window on the screen")
            scenarios.keyboard.press("Tab")
            wait_for(lambda: setup.key_field.has("focused"), "the focus in the field")
            wait_for(lambda: is_inside(setup.key_field.extents, setup.content.extents),
                     "the field in sight")
            scenarios.keyboard.type("a-new-key")
            scenarios.keyboard.press("Tab")
            wait_for(lambda: is_inside(setup.button("Save").extents, setup.content.extents),
                     "the button in sight")


if __name__ == "__main__":
    unittest.main()
