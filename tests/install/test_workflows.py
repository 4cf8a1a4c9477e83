#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The workflows: what they run is in the repository, what they use is named by its commit."""

import pathlib
import re
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
WORKFLOWS = sorted((TOP / ".github/workflows").glob("*.yml"))
# A container has no git at first, and the checkout needs git.
PREPARATIONS = ("apt-get update && apt-get install -y --no-install-recommends ca-certificates git",
                "dnf install -y git-core")


def lines(workflow, key):
    """The values of a key, wherever it stands."""
    return re.findall(rf"^[ -]*{key}: (.+)$", workflow.read_text(), re.MULTILINE)


class Workflows(unittest.TestCase):
    def test_there_are_some(self):
        self.assertEqual([path.stem for path in WORKFLOWS], ["nightly", "release", "test"])

    def test_an_action_is_named_by_its_commit_and_its_release(self):
        commits = {}
        for workflow in WORKFLOWS:
            for action in lines(workflow, "uses"):
                match = re.fullmatch(r"(actions/[a-z-]+)@([0-9a-f]{40}) # v\d+\.\d+\.\d+", action)
                self.assertTrue(match, action)
                commits.setdefault(match[1], set()).add(action)
        self.assertTrue(commits)
        for action, named in commits.items():
            self.assertEqual(len(named), 1, action)

    def test_a_step_is_a_script_of_the_repository(self):
        for workflow in WORKFLOWS:
            steps = lines(workflow, "run")
            self.assertTrue(steps)
            for step in steps:
                if step not in PREPARATIONS:
                    script = TOP / step.split()[0]
                    self.assertTrue(script.is_file() and script.stat().st_mode & 0o100, step)

    def test_the_rights_are_the_least(self):
        for workflow in WORKFLOWS:
            text = workflow.read_text()
            self.assertIn("\npermissions:\n  contents: read\n", text, workflow)
            # Only a release is written.
            self.assertEqual(text.count(": write"), 1 if workflow.stem == "release" else 0, workflow)
            self.assertEqual(text.count("uses: actions/checkout@"),
                             text.count("persist-credentials: false"), workflow)

    def test_no_job_runs_without_an_end(self):
        for workflow in WORKFLOWS:
            jobs = workflow.read_text().partition("\njobs:\n")[2]
            for job in re.split(r"^  (?=\w+:\n)", jobs, flags=re.MULTILINE)[1:]:
                self.assertIn("\n    timeout-minutes: ", job, workflow)


if __name__ == "__main__":
    unittest.main()
