#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The icon and its menu on real panels."""

import unittest

from appearance import Appearance
from dictation_test import DictationTest
from panels import PanelIcon
from windows import visible_windows, wait_for_window

SCREEN = (1280, 800)


class OnAPanel:
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.tray.close()
        cls.appearance.decorate(cls.desktop)

    def setUp(self):
        self.service = self.start_scripted_service()
        self.start_application(self.service, environment=self.environment)
        self.icon = PanelIcon(self.desktop)
        self.hold()
        self.service.stream()
        self.icon.wait_until_red()
        self.keyboard.release()
        self.icon.wait_until_idle()

    def test_the_icon_changes_and_stays_in_its_place(self):
        place = self.icon.place
        self.hold()
        self.service.stream(2)
        self.icon.wait_until_red()
        self.assertEqual(self.icon.place, place)

    def test_a_click_opens_the_menu_beside_the_icon_and_keys_choose_in_it(self):
        _, icon_top, _, icon_height = self.icon.place
        left, top, width, height = self.icon.open_menu()
        self.assertGreaterEqual(top, icon_top + icon_height)
        self.assertTrue(self.icon.is_visible)
        self.assertGreaterEqual(left, 0)
        self.assertLessEqual(left + width, SCREEN[0])
        self.assertLessEqual(top + height, SCREEN[1])
        # The keyboard skips the information lines at the top.
        self.keyboard.press("Down")
        self.keyboard.press("Return")
        window = wait_for_window(self.desktop).wait_until_active()
        self.assertEqual(visible_windows(self.desktop), [window.number])
        self.assertIsNone(self.icon.menu())


class LightXfce(OnAPanel, DictationTest):
    appearance = Appearance("xfce4-panel")
    environment = appearance.environment


class DarkLxqt(OnAPanel, DictationTest):
    appearance = Appearance("lxqt-panel", is_dark=True)
    environment = appearance.environment


class DarkPanelOnALightDesktop(OnAPanel, DictationTest):
    appearance = Appearance("xfce4-panel", is_dark=True)
    environment = {}


if __name__ == "__main__":
    unittest.main()
