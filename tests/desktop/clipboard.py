# SPDX-License-Identifier: MIT

"""A program that owns the clipboard."""

import subprocess

from desktop import wait_for


class Clipboard:
    """Offers a text until it is closed, or until another program takes the clipboard."""

    def __init__(self, desktop, text):
        self._desktop = desktop
        self._process = desktop.spawn(
            ["xclip", "-quiet", "-selection", "clipboard", "-in"], stdin=subprocess.PIPE)
        self._process.stdin.write(text.encode())
        self._process.stdin.close()
        wait_for(lambda: self.content == text, "the text in the clipboard", process=self._process)

    @property
    def content(self):
        return self._desktop.run(["xclip", "-selection", "clipboard", "-out"], check=False)

    @property
    def is_owner(self):
        """Whether this program still owns the clipboard. It ends when another program takes it."""
        return self._process.poll() is None

    def close(self):
        self._desktop.end(self._process)
