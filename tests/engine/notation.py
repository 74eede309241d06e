"""Reads values in the notation that compounds, lists and texts inside them are shown in."""

import math
import re

import numpy as np

ESCAPES = {"n": "\n", "t": "\t", "r": "\r", "\\": "\\", "'": "'", '"': '"', "0": "\0"}
TOKEN = re.compile(r"""
    (?P<space>\s+)
  | (?P<escaped>[Ee]'(?:[^'\\]|''|\\.)*')
  | (?P<bytes>[Xx]'[0-9a-fA-F]*')
  | (?P<string>'(?:[^']|'')*')
  | (?P<name>"(?:[^"]|"")*"|[Ee]"(?:[^"\\]|""|\\.)*")
  | (?P<number>-?(?:\d+(?:\.\d*)?(?:[eE][-+]?\d+)?|inf)|nan)(?=[\],}\s]|$)
  | (?P<word>[^\W\d][\w]*)
  | (?P<symbol>[][{}:,])
""", re.VERBOSE | re.DOTALL)


def read_value(text):
    """The value of the whole text: dict, list, str, bytes, int, float or None."""
    tokens = []
    at = 0
    while at < len(text):
        match = TOKEN.match(text, at)
        assert match is not None, f"no value at {text[at:at + 30]!r} of {text!r}"
        at = match.end()
        if match.lastgroup != "space":
            tokens.append((match.lastgroup, match.group()))
    reader = Reader(tokens)
    value = reader.value()
    assert reader.at == len(tokens), f"more behind the value in {text!r}"
    return value


class Reader:
    def __init__(self, tokens):
        self.tokens = tokens
        self.at = 0

    def take(self):
        self.at += 1
        return self.tokens[self.at - 1]

    def accept(self, symbol):
        found = self.tokens[self.at:self.at + 1] == [("symbol", symbol)]
        self.at += found
        return found

    def expect(self, symbol):
        assert self.accept(symbol), f"expected {symbol} at {self.tokens[self.at:]}"

    def value(self):
        if self.accept("{"):
            return self.members()
        if self.accept("["):
            return self.items()
        kind, text = self.take()
        if kind == "string":
            return text[1:-1].replace("''", "'")
        if kind == "escaped":
            return unescape(text[2:-1])
        if kind == "bytes":
            return bytes.fromhex(text[2:-1])
        if kind == "number":
            return float(text) if re.search(r"[.einfa]", text) else int(text)
        assert (kind, text) == ("word", "NULL"), (kind, text)
        return None

    def members(self):
        members = {}
        while not members or self.accept(","):
            kind, name = self.take()
            assert kind in ("word", "name"), name
            self.expect(":")
            members[name if kind == "word" else unquoted_name(name)] = self.value()
        self.expect("}")
        return members

    def items(self):
        items = []
        if self.accept("]"):
            return items
        items.append(self.value())
        while self.accept(","):
            items.append(self.value())
        self.expect("]")
        return items


def unquoted_name(text):
    text = text.replace('""', '"')
    return text[1:-1] if text[0] == '"' else unescape(text[2:-1])


def unescape(text):
    def meaning(match):
        escape = match.group(1) or match.group(2)
        if match.group() == "''":
            return "'"
        if escape[0] == "x":
            # A byte: surrogateescape is how bytes that are no text stand in a str here.
            return bytes([int(escape[1:], 16)]).decode("utf-8", "surrogateescape")
        return ESCAPES[escape]
    return re.sub(r"''|\\(x[0-9a-fA-F]{2})|\\(.)", meaning, text, flags=re.DOTALL)


def same(left, right):
    """Equal in kind and value; a NAN equals a NAN. An integer may be shown for a whole real number, not the reverse."""
    if isinstance(left, dict) and isinstance(right, dict):
        return list(left) == list(right) and all(same(left[name], right[name]) for name in left)
    if isinstance(left, list) and isinstance(right, list):
        return len(left) == len(right) and all(map(same, left, right))
    if isinstance(right, (float, np.float32)) and isinstance(left, (int, float)):
        return type(right)(left) == right or (math.isnan(left) and math.isnan(right))
    return type(left) is type(right) and left == right
