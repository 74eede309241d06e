"""The examples of the users' manual: what a page's fenced blocks say, and running them.

```kelvo            a session: lines that begin with "> " are statements, those under one are what the program prints
```csv marks.csv    any language followed by a file name: the file's content, put into the page's folder

The blocks of a page are worked through in order, in one folder, which is empty before and is called /home/me in the
text. Every block of statements is a session of its own. A session goes on after an error.
"""

import re
from dataclasses import dataclass, field

HOME = "/home/me"
FENCE = re.compile(r"^```(?P<language>\w+)(?: (?P<file>\S+))?\n(?P<text>.*?)^```$", re.MULTILINE | re.DOTALL)
KEPT_BY_A_SESSION = re.compile(r"(USE|SET|CLOSE)\b", re.IGNORECASE)


@dataclass
class Example:
    line: int  # of the page, where the block begins
    steps: list = field(default_factory=list)  # (statement, the lines printed)


@dataclass
class File:
    name: str
    content: str


def read_page(text):
    """The page's examples and files, in order."""
    blocks = []
    for fence in FENCE.finditer(text):
        if fence["file"]:
            blocks.append(File(fence["file"], fence["text"]))
        elif fence["language"] == "kelvo":
            blocks.append(read_example(text[:fence.start()].count("\n") + 1, fence["text"]))
    return blocks


def read_example(line, text):
    example = Example(line)
    for content in text.splitlines():
        if content.startswith("> "):
            example.steps.append((content[2:], []))
        else:
            assert example.steps, f"line {line}: output before the first statement"
            example.steps[-1][1].append(content)
    assert example.steps, f"line {line}: an example without a statement"
    return example


def is_error(lines):
    return bool(lines) and re.search(r"status -\d+\)\.$", lines[-1]) is not None


def sessions(example):
    """The example cut behind its errors, as a script ends there: (statements repeated, steps) of each part."""
    kept, repeated, steps = [], [], []
    for statement, lines in example.steps:
        steps.append((statement, lines))
        if is_error(lines):
            yield repeated, steps
            repeated, steps = list(kept), []
        elif KEPT_BY_A_SESSION.match(statement):
            kept.append(statement)
    if steps:
        yield repeated, steps


def run_page(kelvo, text):
    """Runs all that the page shows; an AssertionError tells the line of the page."""
    for block in read_page(text):
        if isinstance(block, File):
            kelvo.path(block.name).write_text(block.content)
            continue
        for repeated, steps in sessions(block):
            statements = [statement.replace(HOME, str(kelvo.folder)) for statement, _ in steps]
            answer = kelvo.run(*repeated, *statements)
            printed = answer.output.decode().replace(str(kelvo.folder), HOME).splitlines()
            # In an error line the program counts lines; in a session of one statement at a time it is always 1.
            printed = [re.sub(r"\(line \d+ at", "(line 1 at", line) for line in printed]
            expected = [line for _, lines in steps for line in lines]
            assert printed == expected, f"the example at line {block.line} differs"
