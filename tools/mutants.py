# SPDX-License-Identifier: MIT
"""Makes small faults in C++ sources, one at a time. Works on tokens, in the layout of clang-format."""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""
    (?P<space>\s+|//[^\n]*|/\*.*?\*/|(?m:^[ \t]*\#(?:[^\n\\]|\\\n|\\.)*))
  | (?P<string>R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|(?:u8|u|U|L)?"(?:[^"\\\n]|\\.)*")
  | (?P<char>'(?:[^'\\\n]|\\.)')
  | (?P<number>(?:0[xX][0-9a-fA-F']+|[0-9][0-9']*(?:\.[0-9]*)?(?:[eE][-+]?[0-9]+)?)[uUlLfF]*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<symbol>\.\.\.|<=>|->|\+\+|--|::|&&|\|\||[-+*/%<>=!&|^]=|.)
    """,
    re.VERBOSE | re.DOTALL,
)

# With a space on both sides. Without the spaces `<` opens a template's arguments, and `&` is a reference.
BINARY = {
    "<": ["<="], ">": [">="], "<=": ["<"], ">=": [">"], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "+=": ["-="], "-=": ["+="], "|": ["&"], "&": ["|"],
}
NO_STATEMENT = {
    "const", "constexpr", "auto", "if", "for", "while", "switch", "case", "using", "namespace", "class",
    "struct", "static", "template", "else", "public", "private", "default", "do", "static_assert",
}
STATEMENT = re.compile(
    r"(?:\+\+|--)\w"
    r"|(?:return|break|continue)$"
    r"|[*(]*[\w:]+(?:<[\w:<>, ]*>)?(?:\.|->|\[|\()"
    r"|\*?[\w.:>\-\[\]]+ (?:=|\+=|-=|\|=) ",
    re.DOTALL,
)
PARAMETER = re.compile(r"(?:const )?[\w:]+(?:<.*>)?(?:\s*[&*]+\s*|\s+)(?:\w+|/\*\w+\*/)(?: = .*)?$", re.DOTALL)


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass(frozen=True)
class Mutant:
    """One fault. `source` is the whole changed file. `key` names the fault without a line number."""

    path: str
    line: int
    kind: str
    key: str
    source: str


def tokens_of(source):
    found = []
    for match in TOKEN.finditer(source):
        if match.lastgroup != "space" and match.group("space") is None:
            kind = next(k for k in ("string", "char", "number", "word", "symbol")
                        if match.group(k) is not None)
            found.append(Token(kind, match.group(0), match.start(), match.end()))
    return found


def closing(tokens, index):
    """The index of the bracket that closes the one at `index`."""
    depth = 0
    for position in range(index, len(tokens)):
        if tokens[position].text in "([{":
            depth += 1
        elif tokens[position].text in ")]}":
            depth -= 1
            if depth == 0:
                return position
    return None


def replacements(source, tokens):
    """Yields (kind, start, end, new text)."""
    for index, token in enumerate(tokens):
        before = source[token.start - 1] if token.start else " "
        after = source[token.end] if token.end < len(source) else " "
        if token.text in BINARY and before in " \n" and after in " \n":
            if "string" in (tokens[index - 1].kind, tokens[index + 1].kind):
                continue  # Texts can only be joined.
            for other in BINARY[token.text]:
                yield "operator", token.start, token.end, other
        elif token.text in ("++", "--"):
            yield "operator", token.start, token.end, "--" if token.text == "++" else "++"
        elif token.text == "!" and not after.isspace():
            yield "negation", token.start, token.end, ""
        elif token.text in ("true", "false"):
            yield "constant", token.start, token.end, "false" if token.text == "true" else "true"
        elif token.kind == "number":
            yield from numbers(token)
        elif token.kind == "char" and len(token.text) == 3 and token.text[1] != "\\":
            yield "constant", token.start, token.end, "'" + chr(ord(token.text[1]) + 1) + "'"
        elif token.kind == "string" and not token.text.endswith('""'):
            yield "text", token.start, token.end, '""'
        elif token.text == "if" and tokens[index + 1].text == "(":
            yield from conditions(source, tokens, index + 1)
        if token.kind == "word" and index + 1 < len(tokens) and tokens[index + 1].text == "(":
            yield from swaps(source, tokens, index + 1)
        if token.text in ("{", "}", ";", ":"):
            yield from removals(source, tokens, index + 1)


def numbers(token):
    match = re.fullmatch(r"([0-9][0-9']*)(\.[0-9]*)?([uUlLfF]*)", token.text)
    if match:
        whole = int(match[1].replace("'", ""))
        yield "constant", token.start, token.end, f"{whole + 1}{match[2] or ''}{match[3]}"
    elif token.text.startswith("0x"):
        yield "constant", token.start, token.end, f"0x{int(token.text, 16) + 1:X}"


def conditions(source, tokens, opening):
    end = closing(tokens, opening)
    inside = source[tokens[opening].end : tokens[end].start]
    if any(token.text == "=" for token in tokens[opening:end]) and "[" not in inside:
        if ";" not in inside:
            yield "condition", tokens[end].start, tokens[end].start, "; false"
    else:
        yield "condition", tokens[opening].end, tokens[end].start, f"!({inside})"


def swaps(source, tokens, opening):
    end = closing(tokens, opening)
    if end is None:
        return
    cuts, depth = [tokens[opening].end], 0
    for token in tokens[opening + 1 : end]:
        depth += (token.text in "([{") - (token.text in ")]}")
        if token.text == "," and depth == 0:
            cuts += [token.start, token.end]
    cuts.append(tokens[end].start)
    arguments = [source[a:b] for a, b in zip(cuts[::2], cuts[1::2])]
    # The arguments of weakly() and of the standard algorithms cannot trade places.
    if tokens[opening - 1].text in ("weakly", "all_of", "any_of"):
        return
    if len(arguments) < 2 or any(PARAMETER.match(argument.strip()) for argument in arguments[:2]):
        return
    first, second = (argument.strip() for argument in arguments[:2])
    if first != second:
        yield "swap", cuts[0], cuts[3], f"{second}, {first}"


def removals(source, tokens, first):
    depth = 0
    for position in range(first, len(tokens)):
        text = tokens[position].text
        depth += (text in "([{") - (text in ")]}")
        if depth < 0:
            return
        if text == ";" and depth == 0:
            statement = source[tokens[first].start : tokens[position].start]
            if statement and tokens[first].text not in NO_STATEMENT and STATEMENT.match(statement):
                yield "statement", tokens[first].start, tokens[position].start, ""
            return


def mutants_of(path, source):
    """All mutants of one file, in the order of the file."""
    seen, counts, found = set(), {}, []
    tokens = tokens_of(source)
    for kind, start, end, text in replacements(source, tokens):
        changed = source[:start] + text + source[end:]
        if changed in seen:
            continue
        seen.add(changed)
        first = source.rfind("\n", 0, start) + 1
        last = source.find("\n", end)
        old = " ".join(source[first:last].split())
        new = " ".join((source[first:start] + text + source[end:last]).split())
        key = f"{path}: {old} => {new}"
        counts[key] = counts.get(key, 0) + 1
        if counts[key] > 1:
            key += f" #{counts[key]}"
        found.append(Mutant(path, source.count("\n", 0, start) + 1, kind, key, changed))
    return sorted(found, key=lambda mutant: mutant.line)
