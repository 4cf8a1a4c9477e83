# SPDX-License-Identifier: MIT

"""The targets of the controls on macOS have a method for every action that the core names."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
NAME = r'"(\w+:?)"'
# A name stands in a member of a description, or right before the action in a call.
NAMED = re.compile(rf"actionName = {NAME}|{NAME},\s*(?:\[this\]|weakly\()")


def names_in_the_core():
    sources = [path for folder in ["app", "settings", "usage"] for path in (ROOT / folder).glob("*.cpp")]
    return {name for path in sources for match in NAMED.findall(path.read_text())
            for name in match if name}


def methods_of_the_targets():
    source = (ROOT / "platform/macos/windows/ActionTarget.mm").read_text()
    interface = source[source.index("@interface"):source.index("@end")]
    methods = re.findall(r"^- \(void\)(\w+)(:\(id\))?", interface, re.MULTILINE)
    return {name + (":" if argument else "") for name, argument in methods}


class Actions(unittest.TestCase):
    def test_each_has_a_method_of_its_name(self):
        names = names_in_the_core()
        self.assertEqual(len(names), 9)
        self.assertEqual(methods_of_the_targets(), names | {"performAction:"})


if __name__ == "__main__":
    unittest.main()
