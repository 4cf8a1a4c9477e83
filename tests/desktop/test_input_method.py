#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Text typed into programs while an input method composes what is typed there."""

import contextlib
import signal
import threading
import unittest

from desktop import wait_for
from dictation_test import DictationTest
from input_method import Fcitx, IBus, LateIBus
from spare_keys import SpareKeys

LATIN = "Hello wörld. My tailor is rich, and (so) the quick brown fox: 1, 2; \"3\"!"
CHINESE = "今天天气很好，我们去公园吧。"
# Keys are typed one by one while an input method runs.
TIMEOUT = 20

# In seconds. A program that a busy machine runs now and then.
STOPPED = 0.06
RUNNING = 0.02
SLOW_TIMEOUT = 60

# One of them is never remapped, and eight keystrokes are kept back for other programs.
KEPT_KEYS = 9


@contextlib.contextmanager
def rarely_running(program):
    """Lets a program run a quarter of the time."""
    is_over = threading.Event()

    def stop_and_go():
        while not is_over.is_set():
            program.process.send_signal(signal.SIGSTOP)
            is_over.wait(STOPPED)
            program.process.send_signal(signal.SIGCONT)
            is_over.wait(RUNNING)

    thread = threading.Thread(target=stop_and_go)
    thread.start()
    try:
        yield
    finally:
        is_over.set()
        thread.join()


class Idle(DictationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        IBus(cls.desktop, IBus.IDLE)

    def test_text_keeps_its_order_in_a_program_that_is_slow(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start_target("qt6")
        # Blanks and letters change places first.
        text = " ".join("abcdefghijklmnopqrst")
        with rarely_running(target):
            # D-Bus carries no null character, so accessibility refuses this piece.
            self.dictate(service, "\0" + text)
            target.wait_for_text(text, SLOW_TIMEOUT)
        self.keyboard.release()
        application.log.wait_for("stopRecording (session=1)")
        self.assertGreaterEqual(target.typed_keys, len(text))


class LateEngine(DictationTest):
    """An engine of IBus that answers late. The program answers pings meanwhile, or sleeps."""

    # In seconds. Longer than a program has to rest where nothing tells of the answers.
    DELAY = 0.4

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        LateIBus(cls.desktop, cls.DELAY)

    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)

    def check_typing(self, target, text):
        # D-Bus carries no null character, so accessibility refuses this piece.
        self.dictate(self.service, "\0" + text)
        target.wait_for_text(text, SLOW_TIMEOUT)
        self.keyboard.release()
        self.application.log.wait_for("stopRecording (session=1)")

    def test_text_keeps_its_order_in_a_gtk_4_program(self):
        # It handles further keys inside the wait for the first answer, and the last one comes first.
        target = self.start_target("gtk4", widget="entry")
        self.check_typing(target, "keys in order")
        self.assertGreaterEqual(target.typed_keys, len("keys in order"))

    def test_keys_are_not_used_again_in_a_terminal_before_the_last_answer(self):
        spare = SpareKeys(self.desktop)
        self.addCleanup(spare.close)
        spare.keep(KEPT_KEYS)
        self.check_typing(self.start_terminal(), "".join(map(chr, range(0x4E00, 0x4E18))))


class CompositionTests:
    """Dictations while an input method composes what is typed. A class beside it has the desktop."""

    input_method = None
    # What the user types afterwards, and what the input method makes of it.
    keys = None
    composed = None

    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)

    def check_dictation(self, target, *pieces):
        """Dictates, and checks that the input method still composes afterwards."""
        text = self.check_text(target, TIMEOUT, *pieces)
        self.assertTrue(self.input_method.is_composing)
        self.keyboard.type(self.keys)
        wait_for(lambda: target.text.startswith(text + self.composed), "composed text")

    def check_text(self, target, timeout, *pieces):
        """Dictates, and returns the text once the whole text has arrived."""
        self.dictate(self.service, *pieces)
        text = " ".join(pieces).replace("\0", "")
        target.wait_for_text(text, timeout)
        self.keyboard.release()
        self.application.log.wait_for("stopRecording (session=1)")
        return text

    def start_gtk(self, **options):
        """Starts a program whose text accessibility cannot change."""
        target = self.start_target("gtk3", environment={"NO_AT_BRIDGE": "1"}, **options)
        return self.wait_until_composing(target)

    def wait_until_composing(self, target):
        wait_for(lambda: self.input_method.is_composing, "an input method in " + target.title)
        return target

    def test_text_arrives_unchanged_in_a_gtk_program(self):
        self.check_dictation(self.start_gtk(), LATIN, CHINESE)

    def test_text_arrives_unchanged_in_a_qt_program(self):
        target = self.wait_until_composing(self.start_target("qt6"))
        # D-Bus carries no null character, so accessibility refuses this piece.
        self.check_dictation(target, "\0" + LATIN)
        self.assertGreaterEqual(target.typed_keys, len(LATIN))

    def test_text_arrives_unchanged_and_in_order_in_a_terminal(self):
        target = self.wait_until_composing(self.start_terminal())
        self.check_dictation(target, LATIN, CHINESE)

    def test_a_terminal_that_is_slow_takes_many_keys_at_once_in_order(self):
        target = self.wait_until_composing(self.start_terminal())
        with rarely_running(target):
            self.check_text(target, SLOW_TIMEOUT, LATIN, LATIN, CHINESE)


class ComposingIBus(CompositionTests, DictationTest):
    keys = "nihao "
    composed = "你好"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.input_method = IBus(cls.desktop, IBus.PINYIN)

    def test_keys_are_not_used_again_before_a_slow_input_method_has_answered(self):
        target = self.wait_until_composing(self.start_terminal())
        # More characters than there are keys to lend.
        text = "".join(map(chr, (*range(ord("!"), ord("~")), *range(0x4E00, 0x4E50))))
        with rarely_running(self.input_method):
            self.check_text(target, SLOW_TIMEOUT, text)


class ComposingFcitx(CompositionTests, DictationTest):
    keys = "gksrmf "
    composed = "한글"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.input_method = Fcitx(cls.desktop)
        cls.addClassCleanup(cls.input_method.close)

    def test_text_arrives_unchanged_in_a_window_behind(self):
        target = self.start_gtk(title="behind")
        front = self.start_gtk(title="front")
        target.activate()
        stream = self.dictate(self.service, "Here")
        target.wait_for_text("Here")
        front.activate()
        stream.say(LATIN)
        target.wait_for_text("Here " + LATIN, TIMEOUT)
        self.assertEqual(front.text, "")


if __name__ == "__main__":
    unittest.main()
