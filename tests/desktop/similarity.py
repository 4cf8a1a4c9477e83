# SPDX-License-Identifier: MIT

"""Compares a recognised text with the spoken text."""

import difflib

# Recognition is not perfect. This share of the words has to be right and in order.
MIN_SIMILARITY = 0.75


def words(text):
    return "".join(c for c in text.lower() if c.isalnum() or c.isspace()).split()


def similarity(spoken, text):
    """The share of words that are the same in both texts, 0 to 1."""
    return difflib.SequenceMatcher(None, words(spoken), words(text)).ratio()
