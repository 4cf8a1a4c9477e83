#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The documents: each link to another file finds the file, and its heading there.

The folder TARVIK_DOCUMENTS has them, which is the repository where none is named.
"""

import os
import pathlib
import re
import unittest
import urllib.parse

TOP = pathlib.Path(os.environ.get("TARVIK_DOCUMENTS", pathlib.Path(__file__).parents[2])).resolve()
DOCUMENTS = sorted([*TOP.glob("*.md"), *(TOP / "docs").rglob("*.md")])
# Neither code blocks nor code in a line have links.
CODE = re.compile(r"^```.*?^```|^ {4}.*?$|`[^`\n]*`", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.+)$", re.MULTILINE)


def links(document):
    return [link for link in LINK.findall(CODE.sub("", document.read_text())) if "://" not in link]


def anchors(document):
    """The anchors of the headings: lower case, blanks as hyphens, no other punctuation."""
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")
            for heading in HEADING.findall(document.read_text())}


class Documents(unittest.TestCase):
    def test_links_are_found(self):
        found = {link for document in DOCUMENTS for link in links(document)}
        self.assertIn("docs/using.md", found)
        self.assertTrue(any("#" in link for link in found))

    def test_each_link_has_its_file_and_its_heading(self):
        for document in DOCUMENTS:
            for link in links(document):
                with self.subTest(document=document.relative_to(TOP), link=link):
                    path, _, anchor = urllib.parse.unquote(link).partition("#")
                    target = (document.parent / path).resolve() if path else document
                    self.assertTrue(target.is_relative_to(TOP) and target.exists())
                    if anchor:
                        self.assertIn(anchor, anchors(target))

    def test_the_readme_leads_to_every_page(self):
        """Every page of docs/, whatever page links to it."""
        reached, queue = set(), [TOP / "README.md"]
        while queue:
            document = queue.pop()
            if document in reached:
                continue
            reached.add(document)
            for link in links(document):
                target = (document.parent / link.partition("#")[0]).resolve()
                if target.suffix == ".md" and target.is_file():
                    queue.append(target)
        pages = {path for path in DOCUMENTS if path.parent in (TOP / "docs", TOP / "docs/screenshots")}
        self.assertEqual(pages - reached, set())


if __name__ == "__main__":
    unittest.main()
