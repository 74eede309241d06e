"""Writes scripts for the scripted engine (script_file.h has their lines). Texts are bytes, one character each.

    engine.answers("show group").row(VARINT, 1, -2, 3).count(3)
    engine.fails("bad", -1, 12, "Unknown statement")
"""

TYPES = """TINYINT UNSIGNED_TINYINT SMALLINT UNSIGNED_SMALLINT INT UNSIGNED_INT BIGINT UNSIGNED_BIGINT
    FLOAT DOUBLE CHAR VARTINYINT UNSIGNED_VARTINYINT VARSMALLINT UNSIGNED_VARSMALLINT VARINT
    UNSIGNED_VARINT VARBIGINT UNSIGNED_VARBIGINT VARFLOAT VARDOUBLE VARCHAR OPAQUE""".split()
(TINYINT, UNSIGNED_TINYINT, SMALLINT, UNSIGNED_SMALLINT, INT, UNSIGNED_INT, BIGINT, UNSIGNED_BIGINT,
 FLOAT, DOUBLE, CHAR, VARTINYINT, UNSIGNED_VARTINYINT, VARSMALLINT, UNSIGNED_VARSMALLINT, VARINT,
 UNSIGNED_VARINT, VARBIGINT, UNSIGNED_VARBIGINT, VARFLOAT, VARDOUBLE, VARCHAR,
 OPAQUE) = (1 << power for power in range(23))
ENUMERATION = 1 << 24
COMPOUND = 1 << 25


def escape(text):
    return "".join(c if " " <= c <= "~" and c != "\\" else f"\\x{ord(c):02x}" for c in text)


class EngineScript:
    """The script as it grows. What concerns a statement belongs to the one named last."""

    def __init__(self):
        self.lines = []

    def _add(self, *words):
        self.lines.append(" ".join(str(word) for word in words))
        return self

    def compiler(self, text):
        return self._add("compiler", escape(text))

    def architecture(self, text):
        return self._add("architecture", escape(text))

    def groups(self, *in_turn):
        """What the engine says is in use, call by call; None for no group."""
        for group in in_turn:
            self._add("no-group") if group is None else self._add("group", escape(group))
        return self

    def answers(self, statement):
        return self._add("statement", escape(statement))

    def fails(self, statement, status, position, message):
        return self.answers(statement)._add("fails", status, position, escape(message))

    def row(self, data_type, *numbers):
        return self._add("row", data_type, *numbers)

    def characters(self, text):
        return self._add("characters", CHAR, escape(text))

    def text(self, text):
        """A VARCHAR row; None for a null string."""
        if text is None:
            return self._add("null-text", VARCHAR)
        return self._add("text", VARCHAR, escape(text))

    def claiming(self, elements):
        return self._add("claiming", elements)

    def count(self, elements):
        return self._add("count", elements)

    def using_group(self, group):
        return self._add("using-group", escape(group))

    def interrupted_in(self, operation, occurrence=1):
        return self._add("interrupted-in", operation, occurrence)

    def waiting_in(self, operation, occurrence=1):
        return self._add("waiting-in", operation, occurrence)

    def __str__(self):
        return "".join(line + "\n" for line in self.lines)
