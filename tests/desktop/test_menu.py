#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The status icon's menu, as a panel uses it, and the icon when panels start and end."""

import unittest

from application import VERSION
from desktop import wait_for
from dictation_test import BINARIES, DictationTest
from menu import Menu
from processes import end_applications, desktop_processes
from restart import RestartCheck
from tray import Tray
from windows import visible_windows, wait_for_window

CONTROL_COMMA = (("Control", ","),)
CONTROL_SHIFT_R = (("Control", "Shift", "R"),)
CONTROL_Q = (("Control", "Q"),)

# Title, whether the entry is enabled, shortcut. None is a separator.
EXPECTED = [
    (f"Tarvik Dictate  v{VERSION}", False, ()),
    ("Hold Alt+Space — quick dictation", False, ()),
    ("Tap Alt+Shift+Space — long-form (tap again to stop)", False, ()),
    None,
    ("Setup…", True, CONTROL_COMMA),
    ("Restart Tarvik Dictate", True, CONTROL_SHIFT_R),
    None,
    ("Quit", True, CONTROL_Q),
]


class MenuTest(DictationTest):
    def open_menu(self, tray):
        menu = Menu(self.desktop, *tray.menu)
        self.addCleanup(menu.close)
        return menu

    def check(self, menu):
        """Opens the menu and compares every entry."""
        self.assertEqual(
            [None if entry.is_separator else (entry.title, entry.is_enabled, entry.shortcut)
             for entry in menu.open()], EXPECTED)


class StatusMenu(MenuTest):
    def setUp(self):
        self.before = desktop_processes(self.desktop)
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)
        self.menu = self.open_menu(self.tray)

    def wait_for_the_end(self):
        self.assertEqual(self.application.process.wait(10), 0)

    def test_it_has_the_same_eight_entries_each_time_it_is_opened(self):
        self.check(self.menu)
        self.check(self.menu)

    def test_it_is_the_same_while_recording(self):
        self.hold()
        self.service.stream()
        self.tray.wait_for_icon(recording=True)
        self.check(self.menu)

    def test_an_information_line_does_nothing(self):
        self.menu.click(EXPECTED[0][0])
        self.menu.click("Setup…")
        wait_for_window(self.desktop)
        self.assertEqual(len(visible_windows(self.desktop)), 1)

    def test_setup_brings_the_window_in_front(self):
        self.start_target("gtk3")
        self.menu.click("Setup…")
        window = wait_for_window(self.desktop).wait_until_active()
        self.start_target("gtk3")
        self.assertFalse(window.is_active)
        self.menu.click("Setup…")
        window.wait_until_active()
        self.assertEqual(visible_windows(self.desktop), [window.number])

    def test_quit_ends_all_processes(self):
        self.menu.click("Quit")
        self.wait_for_the_end()
        wait_for(lambda: desktop_processes(self.desktop) <= self.before, "the end of every process")

    def test_restart_ends_it_and_starts_it_after_half_a_second(self):
        self.addCleanup(end_applications, self.desktop, BINARIES)
        restart = RestartCheck(self.desktop, BINARIES, self.application)
        self.menu.click("Restart Tarvik Dictate")
        restart.check(self, seconds="0.5")
        wait_for_window(self.desktop).close()

        self.hold()
        self.service.stream()
        self.keyboard.release()
        menu = self.open_menu(self.tray)
        self.check(menu)
        menu.click("Quit")
        restart.wait_until_all_ended()


class Panels(MenuTest):
    """Panels that start, end and restart while the application runs."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.tray.close()

    def new_panel(self):
        tray = Tray(self.desktop)
        self.addCleanup(tray.close)
        return tray

    def test_without_a_panel_it_works_and_says_that_there_is_no_icon(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        self.hold()
        service.stream()
        self.keyboard.release()
        application.log.wait_for("no tray here")
        self.assertIsNone(application.process.poll())

    def test_a_panel_that_starts_later_gets_the_icon(self):
        application = self.start_application(self.start_scripted_service())
        application.log.wait_for("no tray here")
        tray = self.new_panel()
        tray.wait_for_icon(recording=False)
        self.check(self.open_menu(tray))

    def test_a_panel_that_restarts_gets_the_icon_again(self):
        service = self.start_scripted_service()
        first = self.new_panel()
        self.start_application(service)
        first.wait_for_icon(recording=False)
        first.close()
        self.hold()
        service.stream()
        second = self.new_panel()
        second.wait_for_icon(recording=True)
        self.keyboard.release()
        second.wait_for_icon(recording=False)
        self.check(self.open_menu(second))


if __name__ == "__main__":
    unittest.main()
