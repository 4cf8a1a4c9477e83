# SPDX-License-Identifier: MIT

"""LibreOffice Writer, which is read through its programming interface."""

import pathlib
import subprocess

from matrix.rows import Row

READER = pathlib.Path(__file__).with_name("writer_text.py")
# What the corrections would change in typed text.
CORRECTIONS = ("UseReplacementTable", "TwoCapitalsAtStart", "CapitalAtStartSentence",
               "SetInetAttribute", "ChangeOrdinalNumber", "ChangeDash", "AddNonBreakingSpace",
               "TransliterateRTL", "ChangeAngleQuotes", "CorrectAccidentalCapsLock",
               "ReplaceSingleQuote", "ReplaceDoubleQuote")
WRITER_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry">
{items}</oor:items>
""".format(items="".join(
    f'<item oor:path="/org.openoffice.Office.Common/AutoCorrect"><prop oor:name="{name}" '
    'oor:op="fuse"><value>false</value></prop></item>\n' for name in CORRECTIONS))


class Writer(Row):
    """Writer with its corrections switched off, as they change what is typed."""

    program = "soffice"
    stamped = "by a reader that asks Writer for its text every 5 ms"

    def __init__(self, desktop):
        super().__init__(desktop)
        settings = pathlib.Path(desktop.environment["XDG_CONFIG_HOME"]) / "libreoffice/4/user"
        settings.mkdir(parents=True, exist_ok=True)
        (settings / "registrymodifications.xcu").write_text(WRITER_SETTINGS)
        # The names of pipes are those of the whole machine.
        pipe = desktop.folder.name
        self.target = self.program_target(
            desktop, ".*LibreOffice Writer",
            ["soffice", "--writer", "--norestore", "--nologo", f"--accept=pipe,name={pipe};urp;"],
            {"SAL_USE_VCLPLUGIN": "gtk3"})
        self._reader = desktop.spawn(
            ["/usr/bin/python3", "-B", READER, pipe, self.target.out, self.path],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self._reader.stdout.readline()

    def _tell(self, command):
        self._reader.stdin.write(command.encode() + b"\n")
        self._reader.stdin.flush()
        if not self._reader.stdout.readline():
            raise RuntimeError("the reader of Writer's text has ended")

    @property
    def text(self):
        self._tell("publish")
        return self.target.text

    def clear(self):
        self._tell("clear")

    def close(self):
        self.desktop.end(self._reader)
        self._reader.stdout.close()
        super().close()
