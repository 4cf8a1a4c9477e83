#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Reads the text of LibreOffice Writer through its programming interface and keeps a journal.

usage: writer_text.py PIPE OUT JOURNAL

PIPE names Writer's pipe. Prints "ready" when the document is open. Commands on standard input:
"publish" writes the text to the file OUT, "clear" deletes the text. Each command prints "done".
"""

import pathlib
import select
import sys
import time

import uno
from com.sun.star.connection import NoConnectException

sys.path.append(str(pathlib.Path(__file__).parents[1] / "targets"))
from journal import Journal  # noqa: E402

# Seconds from one look at the text to the next.
INTERVAL = 0.005


def connect(pipe):
    context = uno.getComponentContext()
    resolver = context.ServiceManager.createInstanceWithContext(
        "com.sun.star.bridge.UnoUrlResolver", context)
    while True:
        try:
            remote = resolver.resolve(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
            desktop = remote.ServiceManager.createInstanceWithContext(
                "com.sun.star.frame.Desktop", remote)
            if document := desktop.getCurrentComponent():
                return document.Text
        except NoConnectException:
            pass  # The program is starting.
        time.sleep(0.1)


def main():
    pipe, out, journal_path = sys.argv[1:]
    text = connect(pipe)
    journal = Journal(journal_path)
    last = text.String
    print("ready", flush=True)
    while True:
        current = text.String
        if current != last:
            journal.changed(len(current))
            last = current
        if not select.select([0], [], [], INTERVAL)[0]:
            continue
        command = sys.stdin.buffer.raw.readline().decode().strip()
        if not command:
            return
        if command == "clear":
            text.setString("")
        else:
            pathlib.Path(out).write_text(text.String, encoding="utf-8")
        print("done", flush=True)


if __name__ == "__main__":
    main()
