# SPDX-License-Identifier: MIT

"""The property lists of the application are valid and say what the system has to know."""
import pathlib
import plistlib
import re
import unittest

# The keys that the system publishes for an application, with the types of their values.
KEYS = {
    "CFBundleDevelopmentRegion": str,
    "CFBundleDisplayName": str,
    "CFBundleExecutable": str,
    "CFBundleIconFile": str,
    "CFBundleIdentifier": str,
    "CFBundleInfoDictionaryVersion": str,
    "CFBundleName": str,
    "CFBundlePackageType": str,
    "CFBundleShortVersionString": str,
    "CFBundleVersion": str,
    "LSApplicationCategoryType": str,
    "LSMinimumSystemVersion": str,
    "LSUIElement": bool,
    "NSHighResolutionCapable": bool,
    "NSMicrophoneUsageDescription": str,
    "NSPrincipalClass": str,
}
ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGING = ROOT / "packaging/macos"


def project_version():
    project = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"^project\(TarvikDictate VERSION (\S+)", project, re.MULTILINE)[1]


class InformationDictionary(unittest.TestCase):
    def setUp(self):
        template = (PACKAGING / "Info.plist.in").read_text()
        self.information = plistlib.loads(
            template.replace("@PROJECT_VERSION@", project_version()).encode())

    def test_every_placeholder_is_filled_in(self):
        self.assertNotIn("@", "".join(map(str, self.information.values())))

    def test_it_carries_the_version_of_the_project(self):
        self.assertRegex(self.information["CFBundleShortVersionString"], r"^\d+\.\d+\.\d+$")
        self.assertEqual(self.information["CFBundleVersion"],
                         self.information["CFBundleShortVersionString"])

    def test_it_is_an_accessory_for_macos_13(self):
        self.assertIs(self.information["LSUIElement"], True)
        self.assertEqual(self.information["LSMinimumSystemVersion"], "13.0")
        presets = (ROOT / "CMakePresets.json").read_text()
        self.assertIn('"CMAKE_OSX_DEPLOYMENT_TARGET": "13.0"', presets)

    def test_it_says_what_the_microphone_is_for(self):
        self.assertGreater(len(self.information["NSMicrophoneUsageDescription"]), 20)

    def test_it_names_what_the_bundle_contains(self):
        self.assertEqual(self.information["CFBundleIdentifier"], "com.tarvik.dictate")
        self.assertEqual(self.information["CFBundlePackageType"], "APPL")
        bundle = (PACKAGING / "Bundle.cmake").read_text()
        self.assertIn(f"TARGET_FILE:{self.information['CFBundleExecutable']}>", bundle)
        self.assertIn(f"Resources/{self.information['CFBundleIconFile']}.icns", bundle)


    # The system ignores a key that it does not know, so a misspelt one would go unnoticed.
    def test_every_key_is_one_of_the_system_and_of_its_type(self):
        for key, value in self.information.items():
            self.assertIs(type(value), KEYS[key], key)

    def test_its_texts_have_the_published_forms(self):
        self.assertRegex(self.information["CFBundleIdentifier"], r"^[A-Za-z0-9.-]+$")
        self.assertEqual(self.information["CFBundleInfoDictionaryVersion"], "6.0")
        self.assertLess(len(self.information["CFBundleName"]), 16)
        self.assertEqual(self.information["LSApplicationCategoryType"],
                         "public.app-category.productivity")
        self.assertEqual(self.information["NSPrincipalClass"], "NSApplication")
        self.assertIs(self.information["NSHighResolutionCapable"], True)


class Entitlements(unittest.TestCase):
    # Above all not the sandbox: inside it macOS 15.0 and 15.1 refuse hotkeys whose modifiers are
    # Option, or Option and Shift, which both of ours are, and no text reaches another program.
    def test_the_microphone_is_the_only_one(self):
        entitlements = plistlib.loads((PACKAGING / "Entitlements.plist").read_bytes())
        self.assertEqual(entitlements, {"com.apple.security.device.audio-input": True})


if __name__ == "__main__":
    unittest.main()
