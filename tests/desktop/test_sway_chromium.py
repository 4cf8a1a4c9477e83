#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Emoji in a program that cuts typed characters to 16 bits, in a Sway session."""

import unittest

from desktop import wait_for
from session_test import EXACT
from sway import become_ordinary_user
from sway_parts import chromium
from test_sway import OnSwayTest

LEFT_OUT = "the program would make other characters of these"


class ChromiumOnSway(OnSwayTest):
    def test_emoji_arrive_with_the_text_around_them(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = chromium(self.desktop)
        self.addCleanup(target.close)
        self.keyboard.hold()
        stream = service.stream(1)
        text = ""
        for piece in (EXACT, "Plain again.", "Fine 👍🏽 family 👨‍👩‍👧‍👦 end", "😀" * 300, "Done."):
            stream.say(piece)
            text += (" " if text else "") + piece
            wait_for(lambda: target.text == text, f"{text!r}; there is {target.text!r}", 20)
        self.keyboard.end_hold()
        self.assertEqual(application.log.count(LEFT_OUT), 0)


if __name__ == "__main__":
    become_ordinary_user()
    unittest.main()
