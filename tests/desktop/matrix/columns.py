# SPDX-License-Identifier: MIT

"""The ways to enter text. Each way enters the texts a number of times and notes how they arrive."""

import subprocess
import time

from matrix import corpus
from matrix.keys import KeyWatch

# A text is judged when nothing has changed for so many seconds. A long dictation ends by itself after
# 30 s without a word, so a text that is later than this counts as wrong.
QUIET_DICTATION = 20.0
QUIET_PROGRAM = 2.0
# The same for a text that is there except for the characters that its program cannot take.
QUIET_INCOMPLETE = 1.5
PAINT_TIMEOUT = 0.2
# More wrong texts than this end a column early. Texts that lack what their program cannot take do
# not count.
MAX_WRONG = 24
# Parts of the lines in the application's log that tell of a text: it was lost, is elsewhere, or went by keys.
REPORTS = ("not delivered", "may have gone to another window", "will be typed")


def within_16_bits(text):
    """The text without the characters that need more than 16 bits, and without what a program makes
    of such a character when it drops the other bits."""
    return "".join(character for character in text
                   if not "\ue000" <= character <= "\uf8ff" and character <= "\uffff")


class Outcome:
    """What has become of the texts of one column."""

    def __init__(self, earlier=None):
        """`earlier` are the values of an outcome that is continued."""
        # How often the short texts and the long ones were entered.
        self.passes = 0
        self.long_passes = 0
        self.texts = 0
        self.wrong = []
        self.changed = {"short": [], "long": []}
        self.painted = {"short": [], "long": []}
        self.roads = {}
        self.missed_presses = 0
        # The application's log lines about texts that went another way or nowhere.
        self.reports = []
        vars(self).update(earlier or {})
        self.error = None

    @property
    def is_hopeless(self):
        return sum(not wrong["beyond_16_bits"] for wrong in self.wrong) >= MAX_WRONG

    def is_complete(self, repetitions):
        return self.is_hopeless or self.passes >= repetitions

    def note_time(self, kind, text, nanoseconds):
        size = "long" if corpus.is_long(text) else "short"
        getattr(self, kind)[size].append(round(nanoseconds / 1e6, 3))

    def note_text(self, name, expected, actual):
        """Notes how a text has arrived."""
        self.texts += 1
        if actual != expected:
            start = next((index for index, pair in enumerate(zip(expected, actual))
                          if pair[0] != pair[1]), min(len(expected), len(actual)))
            self.wrong.append({
                "name": name, "at": start, "expected": expected[start:start + 40],
                "actual": actual[start:start + 40], "missing": len(expected) - len(actual),
                "beyond_16_bits": within_16_bits(actual) == within_16_bits(expected)})

    def values(self):
        return {key: value for key, value in vars(self).items()}


class Entry:
    """Enters texts into one program in one way, and waits for each of them."""

    def __init__(self, row, outcome, watch=None):
        self._row = row
        self._outcome = outcome
        self._watch = watch
        self._text = ""

    def clear(self):
        self._row.clear()
        self._text = ""

    def check_rest(self):
        """Notes what has come after the last text was judged."""
        self._judge("afterwards", "") if self._row.text != self._text else None

    def enter(self, name, piece, act, is_over=None, quiet=QUIET_DICTATION, is_late=lambda: False):
        """Enters a piece by `act`, which returns the time in nanoseconds at which it began. Returns
        false if `is_late` became true before the piece was there; then the piece is not judged."""
        row = self._row
        row.journal.update()
        since = len(row.journal)
        wanted = row.length(self._text + piece)
        incomplete = row.length(self._text + within_16_bits(piece))
        presses = self._watch.presses if self._watch else 0
        begin = act()
        changed = self._wait_for_length(
            (wanted, incomplete), since, begin, len(piece), is_over, quiet, is_late)
        if not changed and is_late():
            return False
        painted = self._wait_for_frame(changed.length, since) if changed else None
        is_right = self._judge(name, piece)
        if self._watch:
            road = "typed keys" if self._watch.presses > presses else "accessibility"
            self._outcome.roads.setdefault(road if is_right else "wrong", []).append(name)
        elif changed and (is_right or changed.length != wanted):
            self._outcome.note_time("changed", piece, changed.time - begin)
            if painted:
                self._outcome.note_time("painted", piece, painted.time - begin)
        return True

    def enter_together(self, names, pieces, act):
        """Enters several pieces at once. Their times do not count."""
        self._row.journal.update()
        since = len(self._row.journal)
        whole = "".join(pieces)
        length = self._row.length(self._text + whole)
        self._wait_for_length((length, length), since, act(), len(whole), None,
                              QUIET_DICTATION, lambda: False)
        before, actual = self._text, self._row.text
        if actual == before + whole:
            self._outcome.texts += len(names)
            self._text = actual
            return
        for name, piece in zip(names, pieces):
            end = len(self._text) + len(piece)
            self._outcome.note_text(name, piece, actual[len(self._text):end])
            self._text += piece
        self._text = actual

    def _judge(self, name, piece):
        expected, actual = self._text + piece, self._row.text
        start = len(self._text) if actual.startswith(self._text) else 0
        self._outcome.note_text(name, expected[start:], actual[start:])
        self._text = actual
        return actual == expected

    def _wait_for_length(self, lengths, since, begin, size, is_over, quiet, is_late):
        """Waits for the length of the whole text, the first of `lengths`, or for the other one, that
        of the text without what its program cannot take. Returns the change that led there."""
        whole, incomplete = lengths
        journal = self._row.journal
        deadline = begin / 1e9 + 20 + size / 10
        while True:
            journal.update()
            if journal.events[since:] and journal.length == whole:
                return journal.first("changed", whole, since)
            now = time.monotonic()
            last = journal.events[-1].time if journal.events[since:] else begin
            if now > deadline or self._row.has_ended or is_late():
                return None
            idle = now - last / 1e9
            if idle > min(quiet, QUIET_INCOMPLETE) and incomplete != whole:
                if journal.events[since:] and journal.length == incomplete:
                    return journal.last("changed", incomplete, since)
            if idle > quiet and (is_over is None or is_over()):
                return None
            time.sleep(0.003)

    def _wait_for_frame(self, length, since):
        deadline = time.monotonic() + PAINT_TIMEOUT
        while self._row.paints and time.monotonic() < deadline:
            self._row.journal.update()
            if event := self._row.journal.first("painted", length, since):
                return event
            time.sleep(0.003)
        return None


class Dictated:
    """Text that is dictated. The texts of one recording are its final transcripts."""

    is_ours = True
    is_slow = False

    def __init__(self, title, record, is_blind=False, max_passes=None):
        self.title = title
        self.is_blind = is_blind
        self._record = record
        self._max_passes = max_passes

    def measure(self, context, repetitions, outcome):
        seen = len(context.dictation.log)
        try:
            self._measure(context, repetitions, outcome)
        finally:
            outcome.reports += [line for line in context.dictation.log[seen:]
                                if any(part in line for part in REPORTS)]

    def _measure(self, context, repetitions, outcome):
        row = context.row
        passes = min(self._max_passes or row.max_passes, row.max_passes)
        if not outcome.roads:
            with KeyWatch(context.desktop) as watch:
                self._record_once(context, Entry(row, outcome, watch), 1, outcome)
        while not context.is_over(outcome) and outcome.passes < repetitions:
            count = min(passes, repetitions - outcome.passes)
            self._record_once(context, Entry(row, outcome), count, outcome)

    def _record_once(self, context, entry, passes, outcome):
        context.row.activate()
        entry.clear()
        separator = ""
        missed = context.dictation.missed_presses
        with self._record(context.dictation) as stream:
            outcome.missed_presses += context.dictation.missed_presses - missed
            for number in range(passes):
                if number > 0 and context.row.clears_while_held:
                    entry.clear()
                self._enter_all(context, entry, stream, separator, outcome)
                separator = " "
                if context.is_over(outcome):
                    break
        entry.check_rest()

    @staticmethod
    def _enter_all(context, entry, stream, separator, outcome):
        texts = list(context.next_texts(outcome).items())
        pieces = [(separator if number == 0 else " ") + text
                  for number, (_, text) in enumerate(texts)]
        for number, (name, text) in enumerate(texts):
            if not entry.enter(name, pieces[number], lambda text=text: stream.say(text),
                               is_late=lambda: stream.is_late):
                # The service has to send the others at once.
                entry.enter_together(
                    [name for name, _ in texts[number:]], pieces[number:],
                    lambda number=number: stream.say_all(text for _, text in texts[number + 1:]))
                return


class Program:
    """Text that a program enters. `commands` returns the commands for a text, in their order."""

    is_ours = False
    is_blind = False

    def __init__(self, title, commands, is_slow=False):
        self.title = title
        self.is_slow = is_slow
        self._commands = commands

    def measure(self, context, repetitions, outcome):
        while not context.is_over(outcome) and outcome.passes < repetitions:
            context.row.activate()
            entry = Entry(context.row, outcome)
            entry.clear()
            for name, text in context.next_texts(outcome).items():
                processes = []

                def act(text=text, processes=processes):
                    begin = time.monotonic_ns()
                    for command, data in self._commands(context.row, text):
                        if processes:
                            processes[-1].wait()
                        processes.append(context.desktop.spawn(command, stdin=subprocess.PIPE))
                        processes[-1].stdin.write(data.encode())
                        processes[-1].stdin.close()
                    return begin

                entry.enter(name, text, act, lambda: processes[-1].poll() is not None,
                            QUIET_PROGRAM)
                processes[-1].wait()
            entry.check_rest()


def _type(*options):
    return lambda _row, text: [(["xdotool", "type", *options, "--", text], "")]


def _paste(row, text):
    selection, keys = row.paste
    return [(["xclip", "-selection", selection, "-in"], text), (["xdotool", "key", *keys], "")]


COLUMNS = {
    "held": Dictated("held", lambda dictation: dictation.held()),
    "toggle": Dictated("toggle", lambda dictation: dictation.toggled()),
    "after": Dictated("after release", lambda dictation: dictation.after_release(), max_passes=1),
    "typed": Dictated("typed keys, held", lambda dictation: dictation.held(), is_blind=True),
    # The last ones: their many changes of the keyboard map keep the window manager busy for long.
    "paste": Program("clipboard paste", _paste),
    "xdotool": Program("`xdotool type`", _type(), is_slow=True),
    "xdotool0": Program("`xdotool type --delay 0`", _type("--delay", "0"), is_slow=True),
}
