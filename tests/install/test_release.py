#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What .ci/release writes beside the files of a release, on a small checkout."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
CHANGES = """# Changelog

## [Unreleased]

- Later.

## [1.2.3] - 2026-11-22

### Added

- This.

## [1.2.2] - 2026-11-01

- Earlier.
"""


# The tools of a Mac note how they were called, and "security" what it was given. realpath knows no -m there.
MAC_TOOL = """#!/bin/sh
echo "$(basename "$0") $*" >>"$TEST_CALLS"
case "$(basename "$0") $*" in
realpath*-m*) echo "realpath: illegal option -- m" >&2; exit 1 ;;
uuidgen*) echo 8C4E ;;
*import*) cat "$2" >>"$TEST_CALLS" ;;
*find-identity*) printf '%s\n' "$TEST_IDENTITIES" ;;
esac
"""
MAC_PACKAGE = """#!/bin/sh
echo "package identity=${TARVIK_SIGNING_IDENTITY-} profile=${TARVIK_NOTARY_PROFILE-}" >>"$TEST_CALLS"
mkdir -p build/macos-universal
echo image >"build/macos-universal/Tarvik Dictate.dmg"
"""
IDENTITY = "Developer ID Application: Somebody (A1B2C3)"


class ReleaseTest(unittest.TestCase):
    def setUp(self):
        self.checkout = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.checkout)
        for path in (".ci/release", "tools/spdx", "packaging/linux/version"):
            copy = self.checkout / path
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(TOP / path, copy)
        (self.checkout / "CMakeLists.txt").write_text("project(TarvikDictate VERSION 1.2.3 LANGUAGES CXX)\n")
        (self.checkout / "CHANGELOG.md").write_text(CHANGES)
        self.folder = self.checkout / "build/release"
        for path in ("debian-12/one.deb.txt", "aur/two.tar.gz"):
            file = self.folder / path
            file.parent.mkdir(parents=True)
            file.write_text("contents of " + path)

    def run_step(self, *arguments, status=0, **variables):
        result = subprocess.run(
            [self.checkout / ".ci/release", *arguments], cwd=self.checkout, capture_output=True, text=True,
            timeout=60,
            env={"PATH": os.environ["PATH"], "SOURCE_DATE_EPOCH": "1700000000"} | variables)
        self.assertEqual(result.returncode, status, result.stderr)
        return result.stderr


class Release(ReleaseTest):
    def test_the_changes_are_those_of_the_version(self):
        self.run_step("describe", self.folder)
        self.assertEqual((self.folder / "CHANGES.md").read_text(), "\n### Added\n\n- This.\n\n")

    def test_every_file_has_its_sum_under_its_own_name(self):
        self.run_step("describe", self.folder)
        lines = (self.folder / "SHA256SUMS").read_text().splitlines()
        self.assertEqual(sorted(line.split("  ")[1] for line in lines),
                         ["CHANGES.md", "one.deb.txt", "tarvik-dictate-1.2.3.spdx.json", "two.tar.gz"])
        downloads = self.checkout / "downloads"
        downloads.mkdir()
        for file in self.folder.rglob("*.*"):
            shutil.copy(file, downloads)
        subprocess.run(["sha256sum", "--check", "--quiet", self.folder / "SHA256SUMS"], cwd=downloads,
                       check=True)

    def test_the_bill_of_materials_describes_each_file(self):
        self.run_step("describe", self.folder)
        bill = json.loads((self.folder / "tarvik-dictate-1.2.3.spdx.json").read_text())
        self.assertEqual((bill["spdxVersion"], bill["dataLicense"]), ("SPDX-2.3", "CC0-1.0"))
        self.assertEqual(bill["creationInfo"]["created"], "2023-11-14T22:13:20Z")
        names = {package["SPDXID"]: package["name"] for package in bill["packages"]}
        self.assertEqual(sorted(names.values()),
                         ["CHANGES.md", "aur/two.tar.gz", "debian-12/one.deb.txt", "tarvik-dictate"])
        for relation in bill["relationships"]:
            self.assertIn(relation["relatedSpdxElement"], names)

    def test_it_is_the_same_a_second_time(self):
        self.run_step("describe", self.folder)
        before = {path: path.read_bytes() for path in self.folder.rglob("*.*")}
        self.run_step("describe", self.folder)
        self.assertEqual({path: path.read_bytes() for path in self.folder.rglob("*.*")}, before)

    def test_a_version_without_changes_is_refused(self):
        (self.checkout / "CHANGELOG.md").write_text(CHANGES.replace("1.2.3", "1.2.4"))
        self.assertIn("no section for 1.2.3", self.run_step("describe", self.folder, status=1))

    def test_the_tag_of_another_version_is_refused(self):
        error = self.run_step("describe", self.folder, status=1, GITHUB_REF_TYPE="tag",
                              GITHUB_REF_NAME="v1.2.4")
        self.assertIn("not that of version 1.2.3", error)

    def test_an_unknown_step_is_refused(self):
        self.assertIn(".ci/release", self.run_step("unknown", self.folder, status=2))


class MacRelease(ReleaseTest):
    def setUp(self):
        super().setUp()
        for path, text in [("packaging/macos/package", MAC_PACKAGE),
                           *((f"bin/{tool}", MAC_TOOL)
                             for tool in ("realpath", "security", "uuidgen", "xcrun"))]:
            file = self.checkout / path
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)
            file.chmod(0o755)
        self.calls = self.checkout / "calls"

    def build(self, status=0, **secrets):
        error = self.run_step("macos", "build/release/macos", status=status, **{
            "PATH": f"{self.checkout / 'bin'}:{os.environ['PATH']}", "HOME": str(self.checkout),
            "TEST_CALLS": str(self.calls),
            "TEST_IDENTITIES": f'  1) 77AA "{IDENTITY}"\n     1 valid'} | secrets)
        return self.calls.read_text().splitlines(), error

    def test_the_disk_image_has_the_version_in_its_name(self):
        calls, _ = self.build()
        self.assertEqual(calls[-1], "package identity= profile=")
        self.assertEqual((self.folder / "macos/Tarvik-Dictate-1.2.3.dmg").read_text(), "image\n")

    def test_without_secrets_no_keychain_is_made(self):
        # A secret that is not set is an empty variable in a workflow.
        calls, _ = self.build(MACOS_CERTIFICATE="", NOTARY_PASSWORD="")
        self.assertFalse([call for call in calls if call.startswith(("security", "xcrun"))], calls)

    def test_the_certificate_of_the_secrets_signs(self):
        calls, _ = self.build(MACOS_CERTIFICATE="Y2VydGlmaWNhdGUK", MACOS_CERTIFICATE_PASSWORD="word")
        self.assertIn("certificate", calls, "the decoded certificate is imported")
        self.assertEqual(calls[-1], f"package identity={IDENTITY} profile=")
        self.assertFalse([path for path in self.checkout.rglob("*.p12")])

    def test_credentials_notarise(self):
        calls, _ = self.build(MACOS_CERTIFICATE="Y2VydGlmaWNhdGUK", MACOS_CERTIFICATE_PASSWORD="word",
                              NOTARY_APPLE_ID="somebody@example.org", NOTARY_TEAM="A1B2C3",
                              NOTARY_PASSWORD="p")
        self.assertIn("xcrun notarytool store-credentials tarvik-release --apple-id somebody@example.org "
                      "--team-id A1B2C3 --password p", calls)
        self.assertEqual(calls[-1], f"package identity={IDENTITY} profile=tarvik-release")

    def test_a_certificate_that_is_none_for_this_ends_the_release(self):
        calls, error = self.build(status=1, MACOS_CERTIFICATE="Y2VydGlmaWNhdGUK",
                                  MACOS_CERTIFICATE_PASSWORD="word",
                                  TEST_IDENTITIES="     0 valid identities found")
        self.assertIn("Developer ID Application", error)
        self.assertFalse([call for call in calls if call.startswith("package")], calls)


if __name__ == "__main__":
    unittest.main()
