"""How much of what was spoken has arrived."""

import difflib

# Recognition is not perfect: this part of the words has to be right, in order.
SIMILARITY = 0.75


def words(text):
    return "".join(c for c in text.lower() if c.isalnum() or c.isspace()).split()


def similarity(spoken, text):
    """The part of the words that is the same, 0 to 1."""
    return difflib.SequenceMatcher(None, words(spoken), words(text)).ratio()
