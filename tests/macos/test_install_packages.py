# SPDX-License-Identifier: MIT

"""packaging/macos/install-packages, with stand-ins for the tools of the system."""
import os
import pathlib
import shutil
import subprocess
import tarfile
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIBRARIES = ["simdjson", "highway", "googletest"]
STAND_IN = """#!/bin/sh
for library; do :; done
case "$(basename "$0") $*" in
"brew --cache"*) echo "$TEST_ARCHIVES/$library.tar" ;;
"xcrun --sdk macosx --show-sdk-version") echo "$TEST_SDK" ;;
esac
"""


class InstallPackages(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        packaging = self.folder / "packaging/macos"
        packaging.mkdir(parents=True)
        shutil.copy(ROOT / "packaging/macos/install-packages", packaging)
        for tool in ["xcode-select", "xcrun", "brew"]:
            stand_in = self.folder / "bin" / tool
            stand_in.parent.mkdir(exist_ok=True)
            stand_in.write_text(STAND_IN)
            stand_in.chmod(0o755)
        for library in LIBRARIES:
            self.make_archive(library)

    def archive(self, library):
        return self.folder / "archives" / f"{library}.tar"

    def make_archive(self, library):
        source = self.folder / "sources" / f"{library}-1.0"
        source.mkdir(parents=True, exist_ok=True)
        (source / "CMakeLists.txt").write_text(library)
        (source / "large.cpp").write_text("x" * 100_000)
        self.archive(library).parent.mkdir(exist_ok=True)
        with tarfile.open(self.archive(library), "w") as archive:
            for name in ["CMakeLists.txt", "large.cpp"]:
                archive.add(source / name, f"{library}-1.0/{name}")

    def install(self, sdk="14.0"):
        environment = {"PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}",
                       "TEST_ARCHIVES": str(self.folder / "archives"), "TEST_SDK": sdk}
        return subprocess.run([self.folder / "packaging/macos/install-packages"], env=environment,
                              capture_output=True, text=True, timeout=60)

    def unpacked(self):
        libraries = self.folder / "build/libraries"
        return sorted(str(file.relative_to(libraries)) for file in libraries.rglob("*.*"))

    def test_the_sources_of_every_library_are_unpacked_once(self):
        result = self.install()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.unpacked(), sorted(f"{library}/{name}" for library in LIBRARIES
                                                 for name in ["CMakeLists.txt", "large.cpp"]))
        for library in LIBRARIES:
            self.archive(library).unlink()
        self.assertEqual(self.install().returncode, 0)

    def test_an_sdk_before_that_of_macos_14_is_refused_before_anything_is_fetched(self):
        result = self.install(sdk="13.3")
        self.assertEqual(result.returncode, 1)
        self.assertIn("macOS 13.3", result.stderr)
        self.assertEqual(self.unpacked(), [])
        self.assertEqual(self.install(sdk="26.1").returncode, 0)

    def test_what_was_unpacked_in_part_is_unpacked_again(self):
        os.truncate(self.archive("highway"), 50_000)
        self.assertNotEqual(self.install().returncode, 0)
        self.make_archive("highway")
        result = self.install()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual((self.folder / "build/libraries/highway/large.cpp").stat().st_size, 100_000)


if __name__ == "__main__":
    unittest.main()
