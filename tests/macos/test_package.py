# SPDX-License-Identifier: MIT

"""packaging/macos/package, with stand-ins for the tools of the system that note how they were called."""
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOLS = ["cmake", "lipo", "otool", "xattr", "codesign", "hdiutil", "xcrun", "spctl"]
SYSTEM_LIBRARIES = "\t/usr/lib/libSystem.B.dylib\n\t/System/Library/Frameworks/AppKit.framework/AppKit\n"
ACCEPTED = ("Conducting pre-submission checks\\n  id: 2efe-17\\n"
            "Processing complete\\n  id: 2efe-17\\n  status: Accepted\\n")
REFUSED = ACCEPTED.replace("Accepted", "Invalid")
STAND_IN = """#!/bin/sh
echo "$(basename "$0") $*" >>"$TEST_CALLS"
case $(basename "$0") in
otool) printf 'tarvik-dictate:\\n%b' "$TEST_LIBRARIES" ;;
hdiutil)
    while [ "$1" != -srcfolder ]; do shift; done
    cp -R "$2" "$TEST_IMAGE"
    ;;
xcrun) [ "$1 $2" != "notarytool submit" ] || printf '%b' "$TEST_ANSWER" ;;
esac
"""


class Package(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        packaging = self.folder / "packaging/macos"
        packaging.mkdir(parents=True)
        shutil.copy(ROOT / "packaging/macos/package", packaging)
        self.executable = "Tarvik Dictate.app/Contents/MacOS/tarvik-dictate"
        built = self.folder / "build/macos-universal" / self.executable
        built.parent.mkdir(parents=True)
        built.write_text("the executable")
        self.image = self.folder / "image"
        for tool in [*(self.folder / "bin" / tool for tool in TOOLS), packaging / "install-packages"]:
            tool.parent.mkdir(exist_ok=True)
            tool.write_text(STAND_IN)
            tool.chmod(0o755)

    def package(self, libraries=SYSTEM_LIBRARIES, answer=ACCEPTED, **settings):
        calls = self.folder / "calls"
        calls.write_text("")
        environment = {"PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}", "TEST_CALLS": str(calls),
                       "TEST_LIBRARIES": libraries, "TEST_IMAGE": str(self.image),
                       "TEST_ANSWER": answer, **settings}
        result = subprocess.run([self.folder / "packaging/macos/package"], env=environment,
                                capture_output=True, text=True, timeout=60)
        return result, calls.read_text().splitlines()

    def names(self, calls):
        return [call.split()[0] for call in calls]

    def test_without_identities_the_signature_is_anonymous_and_nothing_is_notarised(self):
        result, calls = self.package()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.names(calls), ["install-packages", "cmake", "cmake", "lipo", "otool",
                                             "xattr", "codesign", "codesign", "hdiutil"])
        self.assertIn("-verify_arch arm64 x86_64", calls[3])
        self.assertEqual(calls[5], "xattr -cr build/macos-universal/Tarvik Dictate.app")
        self.assertIn("--options runtime --timestamp=none --sign - ", calls[6])
        self.assertIn("--entitlements packaging/macos/Entitlements.plist", calls[6])
        self.assertIn("--verify --strict", calls[7])
        self.assertEqual(result.stdout.splitlines()[-1], "build/macos-universal/Tarvik Dictate.dmg")

    def test_the_image_has_the_bundle_and_a_way_to_the_applications_and_nothing_else(self):
        result, _ = self.package()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(sorted(os.listdir(self.image)), ["Applications", "Tarvik Dictate.app"])
        self.assertEqual(os.readlink(self.image / "Applications"), "/Applications")
        self.assertEqual((self.image / self.executable).read_text(), "the executable")

    def test_what_is_built_is_for_both_processors(self):
        _, calls = self.package()
        self.assertIn("--preset macos-universal", calls[1])
        presets = json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]
        values = next(preset["cacheVariables"] for preset in presets
                      if preset["name"] == "macos-universal")
        self.assertEqual(values["CMAKE_OSX_ARCHITECTURES"], "arm64;x86_64")

    def test_with_an_identity_the_bundle_and_the_image_are_signed(self):
        result, calls = self.package(TARVIK_SIGNING_IDENTITY="Developer ID Application: Someone")
        self.assertEqual(result.returncode, 0, result.stderr)
        signatures = [call for call in calls if "--sign Developer ID Application: Someone" in call]
        self.assertEqual(len(signatures), 2)
        self.assertTrue(all("--timestamp " in call for call in signatures))
        self.assertTrue(signatures[1].endswith("Tarvik Dictate.dmg"))
        self.assertNotIn("xcrun", self.names(calls))

    def test_with_a_profile_the_image_is_notarised_stapled_and_assessed_in_this_order(self):
        result, calls = self.package(TARVIK_SIGNING_IDENTITY="Developer ID Application: Someone",
                                     TARVIK_NOTARY_PROFILE="tarvik")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("notarytool submit", calls[-3])
        self.assertIn("--keychain-profile tarvik --wait", calls[-3])
        self.assertIn("stapler staple", calls[-2])
        self.assertTrue(calls[-1].startswith("spctl --assess"))

    def test_a_refusal_of_the_notary_is_explained_and_nothing_is_stapled(self):
        result, calls = self.package(TARVIK_SIGNING_IDENTITY="Developer ID Application: Someone",
                                     TARVIK_NOTARY_PROFILE="tarvik", answer=REFUSED)
        self.assertEqual(result.returncode, 1)
        self.assertIn("status: Invalid", result.stderr)
        self.assertEqual(calls[-1], "xcrun notarytool log 2efe-17 --keychain-profile tarvik")

    def test_without_an_answer_of_the_notary_nothing_is_stapled(self):
        result, calls = self.package(TARVIK_SIGNING_IDENTITY="Developer ID Application: Someone",
                                     TARVIK_NOTARY_PROFILE="tarvik", answer="Error: no network")
        self.assertEqual(result.returncode, 1)
        self.assertIn("Error: no network", result.stderr)
        self.assertIn("notarytool submit", calls[-1])

    def test_a_profile_without_an_identity_is_refused_before_anything_is_built(self):
        result, calls = self.package(TARVIK_NOTARY_PROFILE="tarvik")
        self.assertEqual(result.returncode, 2)
        self.assertEqual(calls, [])

    def test_a_library_of_this_machine_alone_stops_it_before_the_signature(self):
        result, calls = self.package(libraries="\t/opt/homebrew/lib/libsimdjson.dylib\n")
        self.assertEqual(result.returncode, 1)
        self.assertIn("libsimdjson", result.stdout)
        self.assertNotIn("codesign", self.names(calls))


if __name__ == "__main__":
    unittest.main()
