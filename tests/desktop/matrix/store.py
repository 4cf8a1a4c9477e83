# SPDX-License-Identifier: MIT

"""The options and the file of results that the measurements share."""

import argparse
import json


def names(known):
    """An option's type: names that are separated by commas, each the beginning of a known one."""
    def parse(text):
        found = []
        for part in text.split(","):
            matching = [name for name in known if name == part] or [
                name for name in known if name.lower().startswith(part.strip().lower())]
            if not matching:
                raise argparse.ArgumentTypeError(f"{part!r}; known are: {', '.join(known)}")
            found += matching
        return found
    return parse


def save(path, results):
    path.parent.mkdir(parents=True, exist_ok=True)
    partial = path.with_suffix(".partial")
    partial.write_text(json.dumps(results, ensure_ascii=False, indent=1), encoding="utf-8")
    partial.replace(path)


def load(path):
    return json.loads(path.read_text(encoding="utf-8")) if path.exists() else {}
