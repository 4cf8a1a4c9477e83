# SPDX-License-Identifier: MIT

"""Text in UTF-16 units, in which some toolkits count."""


def units_of(text):
    """The text with each UTF-16 unit as a character of its own."""
    data = text.encode("utf-16-le")
    return "".join(chr(int.from_bytes(data[i:i + 2], "little")) for i in range(0, len(data), 2))


def text_of(units):
    """The text of these UTF-16 units. Half a character becomes a replacement character."""
    return units.encode("utf-16-le", "surrogatepass").decode("utf-16-le", "replace")
