# SPDX-License-Identifier: MIT

"""Messages of the service that are no transcript, or a strange one."""

import json

from cell import Cell
from fault_test import FaultTest, add_cells
from scripted_service import transcript


def dropped(name, message, **options):
    """A cell: the message inserts nothing and writes nothing, and a final piece after it arrives."""
    def fault(world):
        world.stream.send(message)
        world.stream.send(transcript("two"))
        world.target.wait_for_text("One two")
    return Cell(name, fault, text="One two", **options)


def inserted(name, text, result=None, **options):
    """A cell: the final piece arrives, and one after it."""
    expected = "One " + (text if result is None else result) + " two"

    def fault(world):
        world.stream.send(transcript(text))
        world.stream.send(transcript("two"))
        world.target.wait_for_text(expected)
    return Cell(name, fault, text=expected, **options)


def shaped(**changes):
    """A transcript message of another shape."""
    return json.dumps({"is_final": True, "channel": {"alternatives": [{"transcript": "bad"}]}} | changes)


CELLS = [
    dropped("no JSON", "no json", is_fast=True),
    dropped("an array", "[]"),
    dropped("null", "null"),
    dropped("a string", '"text"'),
    dropped("a number", "17"),
    dropped("half an object", "{", is_fast=True),
    dropped("a message that is cut off", transcript("bad")[:-5], is_fast=True),
    dropped("a message with more behind it", transcript("bad") + "x"),
    dropped("two messages in one", transcript("bad") + transcript("bad")),
    dropped("a byte order mark", "\ufeff" + transcript("bad")),
    dropped("single quotes", transcript("bad").replace('"', "'")),
    dropped("a comment", transcript("bad")[:-1] + "/* */}"),
    dropped("a raw line break in the text", transcript("bad").replace("bad", "b\nad")),
    dropped("a lone surrogate", transcript("bad").replace("bad", "\\ud800"), is_fast=True),
    dropped("a thousand arrays in one another", "[" * 1000 + "]" * 1000),
    dropped("a hundred thousand objects in one another", '{"a":' * 100_000 + "1" + "}" * 100_000,
            is_fast=True),
    dropped("a number beyond every type", shaped(channel=None)[:-1] + ', "n": 1e999999}'),
    dropped("UTF-16", transcript("bad").encode("utf-16")),
    dropped("no channel", shaped(channel=None)),
    dropped("a channel that is an array", shaped(channel=[])),
    dropped("no alternatives", shaped(channel={})),
    dropped("alternatives that are an object", shaped(channel={"alternatives": {}})),
    dropped("no alternative", shaped(channel={"alternatives": []})),
    dropped("an alternative that is a string", shaped(channel={"alternatives": ["bad"]})),
    dropped("a second alternative that is a string",
            shaped(channel={"alternatives": [{"transcript": "bad"}, "bad"]})),
    dropped("a transcript that is a number", shaped(channel={"alternatives": [{"transcript": 5}]})),
    dropped("a transcript that is empty", shaped(channel={"alternatives": [{"transcript": ""}]}),
            is_fast=True),
    dropped("a final flag that is a string", shaped(is_final="true")),
    dropped("a final flag that is a number", shaped(is_final=1)),
    dropped("a final flag in the channel",
            json.dumps({"channel": {"is_final": True, "alternatives": [{"transcript": "bad"}]}})),
    dropped("an interim transcript", transcript("bad", final=False)),
    inserted("every script", "Zażółć Ω Ж א ع 日本 한 😀"),
    inserted("a blank", " "),
    inserted("quotes and backslashes", '"quoted" \\ back\\slash'),
    inserted("a text of ten thousand characters", "long " * 2000),
    inserted("an escaped surrogate pair", "😀", is_fast=True),
    inserted("a letter and its accent apart", "e\u0301 a\u0308"),
]


class Messages(FaultTest):
    pass


add_cells(Messages, CELLS)
