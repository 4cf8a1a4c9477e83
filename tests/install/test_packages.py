#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The packages are built with every part of the program, whatever the machine that builds them has,
and every file that is installed is in one of them."""

import fnmatch
import os
import pathlib
import re
import shlex
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
INSTALLED = pathlib.Path(os.environ["TARVIK_INSTALLED"])
FOLDER = TOP / "packaging/linux"
RECIPES = ("debian/rules", "PKGBUILD.in", "tarvik-dictate.spec")
# Built where there is a library that few systems have. A package has it nowhere.
LEFT_OUT = {"TARVIK_SPEECH_WHISPER"}
# Each distribution has a place of its own for it.
LICENCE = "usr/share/doc/tarvik-dictate/LICENSE"


def options():
    """The parts of the program that are built where the machine has what they need."""
    found = set()
    for folder in ("platform", "speech-service"):
        for file in (TOP / folder).rglob("CMakeLists.txt"):
            found.update(re.findall(r"^tarvik_package_option\((\w+) ", file.read_text(), re.MULTILINE))
    return found


def installed_files(libexec="libexec"):
    """The installed files without the licence, where the helper is in usr/`libexec`."""
    files = ("usr/" + str(path.relative_to(INSTALLED)) for path in INSTALLED.rglob("*") if path.is_file())
    return sorted(file.replace("usr/libexec/", f"usr/{libexec}/")
                  for file in files if file != LICENCE)


def debian():
    """The patterns of each Debian package."""
    return [file.read_text().split() for file in sorted((FOLDER / "debian").glob("*.install"))]


def rpm():
    """The patterns of each RPM package."""
    macros = {"_bindir": "usr/bin", "_libexecdir": "usr/libexec", "_datadir": "usr/share",
              "_docdir": "usr/share/doc", "_mandir": "usr/share/man", "_prefix": "usr"}
    packages = []
    for line in (FOLDER / "tarvik-dictate.spec").read_text().splitlines():
        if line.startswith("%files"):
            packages.append([])
        elif packages and line.startswith("%{"):
            packages[-1].append(re.sub(r"%{(\w+)}", lambda match: macros[match[1]], line))
    return packages


def arch():
    """The patterns of each package for Arch."""
    text = (FOLDER / "PKGBUILD.in").read_text().replace("\\\n", " ")
    return [shlex.split(line)[1:] for line in re.findall(r"^ +_take .*$", text, re.MULTILINE)]


class Packages(unittest.TestCase):
    def test_each_recipe_decides_on_each_part(self):
        self.assertGreater(options(), LEFT_OUT)
        for recipe in RECIPES:
            text = (FOLDER / recipe).read_text()
            for part in options():
                self.assertIn(f"-D{part}={'OFF' if part in LEFT_OUT else 'ON'}", text, recipe)

    def check(self, packages, files):
        """Checks that each file is in one package, and that no pattern is without a file."""
        self.assertEqual(len(packages), 2, packages)
        self.assertTrue(files)
        used = set()
        for file in files:
            takers = [(package, pattern) for package, patterns in enumerate(packages)
                      for pattern in patterns
                      if fnmatch.fnmatch(file, pattern) or file.startswith(pattern + "/")]
            self.assertEqual(len(takers), 1, f"{file} is taken by {takers}")
            used.update(takers)
        for package, patterns in enumerate(packages):
            for pattern in patterns:
                self.assertIn((package, pattern), used, "no such file")

    def test_debian_has_every_file_once(self):
        self.check(debian(), installed_files())

    def test_rpm_has_every_file_once(self):
        self.check(rpm(), installed_files())

    def test_arch_has_every_file_once(self):
        libexec = re.search(r"-DCMAKE_INSTALL_LIBEXECDIR=(\S+)", (FOLDER / "PKGBUILD.in").read_text())
        self.check(arch(), installed_files(libexec[1] if libexec else "libexec"))


if __name__ == "__main__":
    unittest.main()
