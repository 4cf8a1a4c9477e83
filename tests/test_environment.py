#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The environment of the tests: nothing of the user's own."""

import os
import re
import unittest

# PATH is the machine's. The variables of the project and of sanitizers are settings of a test run.
ALLOWED = re.compile(r"PATH|(TARVIK|CCACHE)_\w+|[A-Z]+SAN_OPTIONS")
OWN = {"HOME", "LANG", "TZ", "FONTCONFIG_FILE", "XDG_CONFIG_DIRS", "DBUS_SYSTEM_BUS_ADDRESS",
       "PULSE_CONFIG", "PULSE_CLIENTCONFIG"}


class Environment(unittest.TestCase):
    def test_it_has_no_other_variables(self):
        self.assertEqual({name for name in os.environ if not ALLOWED.fullmatch(name)}, OWN)

    def test_no_value_is_the_machine_s(self):
        # What tests/hostile-environment sets.
        self.assertEqual([name for name, value in os.environ.items() if "nonsense" in value], [])


if __name__ == "__main__":
    unittest.main()
