#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The setup window: its content, its controls, and its live status."""

import pathlib
import time
import unittest

from application import VERSION
from bus import Bus
from clipboard import Clipboard
from desktop import wait_for
from dictation_test import BINARIES, DictationTest
from fake_program import FakeProgram
from menu import Menu
from processes import end_applications
from restart import RestartCheck
from setup_window import (GRANTED, NOT_GRANTED, NOT_SET, RESTART, SAVED, SetupWindow, click_at,
                          has_status_color)
from timing import check_within
from windows import visible_windows, wait_for_window

KEY = "deepgramApiKey"
MARGIN = 20
SCREEN = (1280, 800)
MIN_SIZE = (830, 555)
# In seconds. The window reads the state once a second and then needs time to draw.
UPDATE_TIMEOUT = 1.5
CHECKBOX = "Launch at login (recommended — keeps the tray icon always available)"
LABELS = [
    "Tarvik Dictate",
    "Version " + VERSION,
    "Hold-to-talk dictation that pastes into any app. Three quick steps:",
    "1.  Microphone not granted? Click Grant and choose one in the sound settings.\n"
    "2.  Accessibility not granted? Click Grant.\n"
    "3.  Get a free Deepgram API key at console.deepgram.com/signup, paste it below, click Save.\n"
    "\n"
    "Two ways to dictate from any text field:\n"
    "  •  HOLD  Alt+Space  for quick dictation — release to paste.\n"
    "  •  TAP   Alt+Shift+Space  for long-form — tap again to stop and paste.\n"
    "\n"
    "Toggle-mode auto-stops after 30 seconds of silence OR 10 minutes total — whichever comes "
    "first. Prevents forgotten sessions from quietly billing Deepgram (~$0.26/hr while open) and "
    "dribbling stray transcripts into whatever app you wandered into. The tray icon no longer red "
    "is your cue.",
    "Deepgram API key",
    SAVED,
    "Microphone",
    GRANTED,
    "Accessibility",
    GRANTED,
    "Changes take effect at once; no restart is needed.",
]


class SetupTest(DictationTest):
    def open_setup(self, settings=None, environment=None):
        self.service = self.start_scripted_service()
        self.application = self.start_application(
            self.service, settings=settings, environment=environment, closes_setup=False)
        self.setup = self.new_setup()

    def new_setup(self):
        setup = SetupWindow(self.desktop, self.keyboard)
        self.addCleanup(setup.close)
        return setup

    def wait_for_place(self, setup, right, top):
        """Waits until the window is in the top right corner of the room that the panels leave."""
        def is_in_place():
            left, upper, width, _ = setup.window.frame
            return (right - left - width, upper - top) == (MARGIN, MARGIN)

        wait_for(is_in_place, "the window in its corner")

    def wait_for_stored(self, line):
        wait_for(lambda: line in self.settings_file.read_text().splitlines(), f"the setting {line}")

    def call_application(self, *arguments):
        self.desktop.run(
            ["gdbus", "call", "--session", "--timeout", "5", "--dest", "com.tarvik.dictate",
             "--object-path", "/com/tarvik/dictate", "--method",
             "org.freedesktop.Application." + arguments[0], *arguments[1:]])


class Content(SetupTest):
    def test_all_its_texts_are_there_from_top_to_bottom(self):
        self.open_setup()
        self.assertEqual(self.setup.labels, LABELS)
        self.assertEqual([part.name for part in self.setup.content.controls],
                         ["Deepgram API key", "Save", "Grant Microphone", "Grant Accessibility",
                          CHECKBOX, RESTART])
        self.assertEqual(self.setup.content.name, "Tarvik Dictate")

    def test_it_keeps_its_distance_from_the_top_right_corner(self):
        self.open_setup()
        self.wait_for_place(self.setup, right=SCREEN[0], top=0)

    def test_it_keeps_its_distance_from_panels(self):
        panel = self.start_terminal()
        self.desktop.run(["xprop", "-id", panel.window, "-f", "_NET_WM_STRUT", "32c",
                          "-set", "_NET_WM_STRUT", "0, 60, 40, 0"])
        wait_for(lambda: "0, 40, 1220, 760" in self.desktop.run(["xprop", "-root", "_NET_WORKAREA"]),
                 "the place that the panel has taken")
        self.open_setup()
        self.wait_for_place(self.setup, right=1220, top=40)

    def test_it_floats_on_every_workspace(self):
        self.open_setup()
        self.assertIn("_NET_WM_STATE_ABOVE", self.setup.window.property("_NET_WM_STATE"))
        self.assertEqual(self.setup.window.property("_NET_WM_DESKTOP"), "4294967295")

    def test_it_has_a_minimum_size(self):
        self.open_setup()
        self.desktop.run(["xdotool", "windowsize", self.setup.window.number, "300", "200"])
        wait_for(lambda: tuple(self.setup.content.extents[2:]) == MIN_SIZE, "the smallest window")

    def test_tab_reaches_every_control_from_top_to_bottom(self):
        self.open_setup()
        controls = self.setup.content.controls
        for control in controls:
            self.assertTrue(control.name)
            self.assertTrue(control.has("focusable"), control.name)
        self.setup.window.activate()
        order = [self.next_focus(controls) for _ in range(len(controls) + 1)]
        middles = [(top + height // 2, left) for left, top, _, height
                   in (control.extents for control in order)]
        self.assertEqual(order[0], controls[0])
        self.assertEqual(order[-1], controls[0])
        self.assertEqual(middles[:-1], sorted(middles[:-1]))
        self.assertEqual(len(set(middles)), len(controls))

    def next_focus(self, controls):
        """Presses Tab; returns the control that gets the focus."""
        before = self.focused(controls)
        self.keyboard.press("Tab")

        def after():
            control = self.focused(controls)
            return control if control and (not before or control != before) else None

        return wait_for(after, "the next control")

    @staticmethod
    def focused(controls):
        """The control that has the focus, or None."""
        return next((control for control in controls if control.has("focused")), None)

    def test_it_is_a_window_to_a_screen_reader(self):
        self.open_setup()
        self.assertEqual(self.setup.content.role, "frame")

    def test_closed_by_a_key_it_comes_back_from_the_menu(self):
        self.open_setup()
        self.setup.window.close()
        self.assertIsNone(self.application.process.poll())
        menu = Menu(self.desktop, *self.tray.menu)
        self.addCleanup(menu.close)
        menu.click("Setup…")
        again = self.new_setup()
        self.assertEqual(again.labels, LABELS)
        self.wait_for_place(again, right=SCREEN[0], top=0)

    def test_it_comes_forward_when_the_application_is_asked(self):
        self.open_setup()
        for request in (["Activate", "{}"], ["ActivateAction", "setup", "[]", "{}"]):
            self.start_target("gtk3")
            self.assertFalse(self.setup.window.is_active)
            self.call_application(*request)
            wait_for(lambda: self.setup.window.is_active, "the window in front again")
            self.assertEqual(visible_windows(self.desktop), [self.setup.window.number])

    def test_restart_starts_it_anew(self):
        self.open_setup()
        self.addCleanup(end_applications, self.desktop, BINARIES)
        restart = RestartCheck(self.desktop, BINARIES, self.application)
        self.setup.click(self.setup.button(RESTART))
        restart.check(self, seconds="0.6")
        self.assertEqual(self.new_setup().labels, LABELS)
        end_applications(self.desktop, BINARIES)
        restart.wait_until_all_ended()


class Key(SetupTest):
    def test_a_typed_key_is_saved_by_the_button_and_not_by_return(self):
        self.open_setup(settings={KEY: ""})
        self.setup.wait_for_key_status(NOT_SET)
        self.setup.enter_key("new-key")
        self.keyboard.press("Return")
        self.keyboard.press("Tab")
        # The window takes keys in their order, so it has seen Return by then.
        wait_for(lambda: self.setup.button("Save").has("focused"), "the focus on the button")
        self.assertEqual(self.setup.key_status, NOT_SET)
        self.keyboard.press("space")
        self.wait_for_stored("deepgramApiKey=new-key")
        self.setup.wait_for_key_status(SAVED)

    def test_a_key_is_pasted_and_saved_by_the_button(self):
        self.open_setup(settings={KEY: ""})
        clipboard = Clipboard(self.desktop, "  pasted-key\n")
        self.addCleanup(clipboard.close)
        self.setup.enter_key("")
        self.keyboard.press("ctrl+v")
        self.setup.click(self.setup.button("Save"))
        self.wait_for_stored("deepgramApiKey=pasted-key")
        self.setup.wait_for_key_status(SAVED)
        self.assertTrue(clipboard.is_owner)
        self.setup.window.close()
        self.hold()
        self.assertEqual(self.service.stream().protocols.replace(" ", ""), "token,pasted-key")

    def test_an_empty_key_is_removed(self):
        self.open_setup()
        self.setup.enter_key("   ")
        self.setup.click(self.setup.button("Save"))
        self.setup.wait_for_key_status(NOT_SET)
        wait_for(lambda: KEY not in self.settings_file.read_text(), "the end of the stored key")

    def test_the_key_is_not_shown(self):
        self.open_setup()
        self.assertNotIn("a-key", self.setup.key_field.text)

    def test_a_key_saved_in_the_prompt_is_shown(self):
        self.open_setup(settings={KEY: ""})
        self.setup.wait_for_key_status(NOT_SET)
        self.hold()
        self.keyboard.release()
        prompt = wait_for_window(self.desktop, besides={self.setup.window.number})
        prompt.wait_until_active()
        self.keyboard.type("other")
        self.keyboard.press("Return")
        prompt.wait_until_gone()
        self.setup.wait_for_key_status(SAVED)


class Permissions(SetupTest):
    def tearDown(self):
        self.set_accessibility(True)

    def set_accessibility(self, enabled):
        bus = Bus(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        bus.set("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status", "IsEnabled", "b", enabled)
        bus.close()

    def is_accessibility_on(self):
        bus = Bus(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        try:
            return bus.get("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status", "IsEnabled")
        finally:
            bus.close()

    def test_a_microphone_that_is_unplugged_and_plugged_in_is_shown(self):
        self.open_setup()

        def attempt():
            self.desktop.run(["pactl", "unload-module", "module-pipe-source"])
            self.setup.wait_for_row("Microphone", NOT_GRANTED)
            # The window has just read the state and reads it again only one interval later.
            self.desktop.plug_microphone()
            begin = time.monotonic()
            self.setup.wait_for_row("Microphone", GRANTED)
            return time.monotonic() - begin

        check_within(UPDATE_TIMEOUT, attempt)

    def test_a_sound_server_that_ends_and_restarts_is_shown(self):
        self.open_setup()
        self.microphone.pull_out()
        self.desktop.end(self.desktop.sound_server)
        self.setup.wait_for_row("Microphone", NOT_GRANTED)
        self.desktop.start_sound_server()
        self.microphone.plug_in()
        self.setup.wait_for_row("Microphone", GRANTED)

    def test_grant_opens_the_sound_settings_only_while_there_is_no_microphone(self):
        mixer = FakeProgram(self.desktop, "pavucontrol")
        self.open_setup(environment=mixer.environment)
        self.setup.click(self.setup.row("Microphone")[2])
        self.desktop.run(["pactl", "unload-module", "module-pipe-source"])
        self.addCleanup(self.desktop.plug_microphone)
        self.setup.wait_for_row("Microphone", NOT_GRANTED)
        self.setup.click(self.setup.row("Microphone")[2])
        wait_for(lambda: mixer.calls, "the settings of the sound")
        self.assertEqual(mixer.calls, ["--tab=4"])

    def test_switched_off_accessibility_is_shown_and_grant_switches_it_on(self):
        opener = FakeProgram(self.desktop, "xdg-open")
        self.open_setup(environment=opener.environment)
        _, status, grant = self.setup.row("Accessibility")
        # Without accessibility only the pixels show the state of the window.
        status_place, grant_place = status.extents, grant.extents
        self.assertTrue(has_status_color(self.desktop, status_place, GRANTED))
        self.set_accessibility(False)
        wait_for(lambda: has_status_color(self.desktop, status_place, NOT_GRANTED),
                 "a red status")
        click_at(self.desktop, grant_place)
        wait_for(self.is_accessibility_on, "accessibility switched on")
        wait_for(lambda: has_status_color(self.desktop, status_place, GRANTED),
                 "a green status")
        self.assertEqual(opener.calls, [], "no browser shows the application's folder")


class LoginItem(SetupTest):
    def setUp(self):
        self.autostart = (pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"])
                          / "autostart/com.tarvik.dictate.desktop")
        self.autostart.unlink(missing_ok=True)
        self.open_setup()
        self.wait_for_checkbox(True)

    def wait_for_checkbox(self, checked):
        wait_for(lambda: self.setup.checkbox.has("checked") == checked,
                 "a checked box" if checked else "an empty box")

    def test_a_first_launch_sets_it(self):
        entry = self.autostart.read_text()
        self.assertIn(f'Exec="{(BINARIES / "tarvik-dictate").resolve()}"', entry)

    def test_it_is_switched_off_and_on(self):
        self.setup.click(self.setup.checkbox)
        wait_for(lambda: not self.autostart.exists(), "the end of the entry")
        self.wait_for_checkbox(False)
        self.setup.click(self.setup.checkbox)
        wait_for(self.autostart.exists, "the entry")
        self.wait_for_checkbox(True)

    def test_an_entry_that_another_program_removes_is_shown(self):
        self.autostart.unlink()
        self.wait_for_checkbox(False)

    def test_it_snaps_back_where_nothing_can_be_written(self):
        self.autostart.unlink()
        self.wait_for_checkbox(False)
        # Even root cannot write below a file.
        folder = self.autostart.parent
        folder.rmdir()
        folder.write_text("in the way")
        self.addCleanup(folder.unlink)
        self.setup.click(self.setup.checkbox)
        self.application.log.wait_for("LoginItem.setEnabled(true) failed: ")
        self.wait_for_checkbox(False)


if __name__ == "__main__":
    unittest.main()
