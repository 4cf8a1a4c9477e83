# SPDX-License-Identifier: MIT

"""packaging/macos/Bundle.cmake, with stand-ins for the tools of the system that note how they were
called."""
import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROJECT = """cmake_minimum_required(VERSION 3.25)
project(TarvikDictate VERSION 1.2.3 LANGUAGES C)
add_executable(tarvik-dictate main.c)
include(packaging/macos/Bundle.cmake)
"""
# Each writes the file that the real tool would write.
STAND_IN = """#!/bin/sh
echo "$(basename "$0") $*" >>"$TEST_CALLS"
while [ $# -gt 1 ]; do
    [ "$1" != --output ] || : >"$2"
    shift
done
"""


class Bundle(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        for name in ["assets", "packaging/macos"]:
            shutil.copytree(ROOT / name, cls.folder / name)
        (cls.folder / "CMakeLists.txt").write_text(PROJECT)
        (cls.folder / "main.c").write_text("int main(void) { return 0; }\n")
        for name in ["rsvg-convert", "iconutil", "xattr", "codesign"]:
            tool = cls.folder / "bin" / name
            tool.parent.mkdir(exist_ok=True)
            tool.write_text(STAND_IN)
            tool.chmod(0o755)
        environment = {**os.environ, "PATH": f"{cls.folder / 'bin'}:{os.environ['PATH']}",
                       "TEST_CALLS": str(cls.folder / "calls")}
        for command in [["-G", "Ninja", "-S", ".", "-B", "build"], ["--build", "build"]]:
            subprocess.run(["cmake", *command], cwd=cls.folder, env=environment, check=True,
                           capture_output=True, timeout=120)
        cls.calls = (cls.folder / "calls").read_text().splitlines()
        cls.contents = cls.folder / "build/Tarvik Dictate.app/Contents"

    def widths(self, asset):
        drawing = re.compile(rf"--width (\d+) .*--output .*/(\S+\.png) \S*/{asset}\.svg$")
        return {match[2]: int(match[1]) for match in map(drawing.search, self.calls) if match}

    def test_the_icon_has_every_size_that_the_system_asks_for(self):
        wanted = {f"icon_{points}x{points}{suffix}.png": points * scale
                  for points in [16, 32, 128, 256, 512] for suffix, scale in [("", 1), ("@2x", 2)]}
        self.assertEqual(self.widths("AppIcon"), wanted)
        self.assertEqual(sorted(os.listdir(self.folder / "build/AppIcon.iconset")), sorted(wanted))

    def test_the_wordmark_is_there_for_both_scales(self):
        self.assertEqual(self.widths("TarvikWordmark"),
                         {"TarvikWordmark.png": 160, "TarvikWordmark@2x.png": 320})

    def test_it_contains_what_a_bundle_has_to_contain_and_nothing_else(self):
        files = {str(path.relative_to(self.contents)) for path in self.contents.rglob("*")
                 if path.is_file()}
        self.assertEqual(files, {"Info.plist", "MacOS/tarvik-dictate", "Resources/AppIcon.icns",
                                 "Resources/TarvikWordmark.png", "Resources/TarvikWordmark@2x.png"})
        information = plistlib.loads((self.contents / "Info.plist").read_bytes())
        self.assertEqual(information["CFBundleShortVersionString"], "1.2.3")
        self.assertTrue(os.access(self.contents / "MacOS" / information["CFBundleExecutable"], os.X_OK))

    def test_it_is_signed_last_and_without_extended_attributes(self):
        bundle = self.contents.parent
        self.assertEqual(self.calls[-2:], [f"xattr -cr {bundle}", f"codesign --force --sign - {bundle}"])


if __name__ == "__main__":
    unittest.main()
