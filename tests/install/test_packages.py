#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The packages are built with every part of the program that the presets for Linux build."""

import json
import pathlib
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
RECIPES = ("debian/rules", "PKGBUILD.in", "tarvik-dictate.spec")


class Packages(unittest.TestCase):
    def test_each_package_names_each_part(self):
        presets = json.loads((TOP / "CMakePresets.json").read_text())["configurePresets"]
        parts = [preset["cacheVariables"] for preset in presets if preset["name"] == "linux"][0]
        self.assertTrue(parts)
        for recipe in RECIPES:
            text = (TOP / "packaging/linux" / recipe).read_text()
            for part in parts:
                self.assertIn(f"-D{part}=ON", text, recipe)


if __name__ == "__main__":
    unittest.main()
