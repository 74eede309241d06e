"""HELP at the prompt: all 99 keys byte for byte, and what is not a topic."""

import re

import pytest
from help_texts import DATA_TYPES, MENUS, TREE_COLUMNS, TREE_DESCRIPTIONS, not_found
from program import BANNER, GREETING, Program

SUBTOPICS = {word: rows for word, (_, _, rows) in MENUS.items() if word}
MENU_KEYS = {"HELP", *("HELP " + word for word in SUBTOPICS)}
KEYS = (["HELP"] + ["HELP " + keyword for keyword, _ in MENUS[""][2]]
        + ["HELP " + keyword for rows in SUBTOPICS.values() for keyword, _ in rows])
LEAVES = [key for key in KEYS if key not in MENU_KEYS | {"HELP ALL", "HELP DATA TYPE"}]


def bold(text):
    return f"\x1b[1m{text}\x1b[0m"


def row(indent, keyword, column, description):
    return " " * indent + bold(keyword) + " " * (column - indent - len(keyword)) + description + "\n"


def menu(word):
    example, column, rows = MENUS[word]
    kind = "subtopics" if word else "topics"
    heading = f'Select one of the following {kind} (example: "help {example}"):\n\n'
    return heading + "".join(row(2, keyword, column, description) for keyword, description in rows)


def tree():
    text = 'Select one of the following topics/subtopics (example: "help create"):\n\n'
    for word, description in MENUS[""][2]:
        text += f"  {bold(word)}  {TREE_DESCRIPTIONS.get(word, description)}\n"
        for keyword, subdescription in SUBTOPICS.get(word, []):
            text += row(4, keyword[len(word) + 1:], TREE_COLUMNS[word],
                        TREE_DESCRIPTIONS.get(keyword, subdescription))
    return text


def data_type_table():
    border = "+----------------------+----------+-----------------------------+\n"
    text = border + "|      \x1b[1mData Type\x1b[0m       | \x1b[1mConstant\x1b[0m |            \x1b[1mSize\x1b[0m             |\n" + border
    for name, constant, size in DATA_TYPES:
        text += f"| {name:<21}| {constant:<9}| {size:<28}|\n" + border
    return text


def entry(syntax="To be defined"):
    return f"\x1b[1mSyntax:\x1b[0m\n{syntax}\n\n\x1b[1mDescription:\x1b[0m\nTo be defined\n"


def expected(key):
    if key in MENU_KEYS:
        return menu(key[len("HELP "):])
    if key == "HELP ALL":
        return tree()
    if key == "HELP DATA TYPE":
        return data_type_table()
    return entry("CLOSE ALL FILE") if key == "HELP CLOSE ALL FILE" else entry()


def ask(program, lines):
    """What the program prints after each of the typed lines."""
    run = program.run("--no-path", lines=[*lines, "exit"])
    assert run.status == 0
    assert run.statements == []
    dialogue = run.stdout[len(BANNER + GREETING):]
    answers = re.split(r"^>.*\n", dialogue, flags=re.MULTILINE)
    assert len(answers) == len(lines) + 2
    return answers[1:-1]


@pytest.fixture(scope="module")
def answers(tmp_path_factory):
    """Answers to all keys, from one run."""
    return dict(zip(KEYS, ask(Program(tmp_path_factory.mktemp("help")), KEYS)))


# --- The tables that the expectations are made from ---

def test_there_are_99_keys_in_the_numbers_of_each_kind():
    assert len(KEYS) == len(set(KEYS)) == 99
    assert len(MENU_KEYS) == 10
    assert len(LEAVES) == 87


def test_columns_are_two_after_the_longest_keyword():
    for word, (_, column, rows) in MENUS.items():
        assert column == 2 + max(len(keyword) for keyword, _ in rows) + 2, word


def test_tree_columns_follow_the_rule_but_for_close():
    for word, column in TREE_COLUMNS.items():
        longest = max(len(keyword) - len(word) - 1 for keyword, _ in SUBTOPICS[word])
        assert column == 4 + longest + (3 if word == "CLOSE" else 2), word


# --- The topics ---

@pytest.mark.parametrize("key", KEYS)
def test_topic(answers, key):
    assert answers[key] == expected(key)


@pytest.mark.parametrize("key", ["HELP", "HELP CREATE", "HELP DATA TYPE", "HELP ALL", "HELP SHOW USE GROUP"])
@pytest.mark.parametrize("typed", [
    str.lower, str.title, lambda key: "  " + key + "  ", lambda key: key.replace(" ", "    "),
    lambda key: key.lower().replace(" ", "\x16\t") + "\x16\t"],
    ids=["lower", "title", "blanks around", "blanks between", "tabs"])
def test_letter_case_and_blanks_do_not_matter(program, key, typed):
    assert ask(program, [typed(key)]) == [expected(key)]


def test_close_all_file_has_a_syntax_line(answers):
    assert answers["HELP CLOSE ALL FILE"].splitlines()[1] == "CLOSE ALL FILE"


def test_tree_has_98_rows_from_create_to_all(answers):
    rows = answers["HELP ALL"].splitlines()[2:]
    assert len(rows) == 98
    assert rows[0] == "  \x1b[1mCREATE\x1b[0m  Create directories, files, groups, datasets, etc."
    assert rows[-1] == "  \x1b[1mALL\x1b[0m  Show all help topics/subtopics in a tree-like structure."


def test_close_begins_in_other_columns_in_tree_and_menu(answers):
    in_tree = ["    \x1b[1mFILE\x1b[0m       Close file in use.",
               "    \x1b[1mALL FILE\x1b[0m   Close all files in use.",
               "    \x1b[1mGROUP\x1b[0m      Close group in use."]
    assert "\n".join(in_tree) in answers["HELP ALL"]
    assert "  \x1b[1mCLOSE FILE\x1b[0m      Close file in use.\n" in answers["HELP CLOSE"]


def test_data_type_table_has_53_lines_of_65_characters(answers):
    lines = re.sub(r"\x1b\[[01]m", "", answers["HELP DATA TYPE"]).splitlines()
    assert len(lines) == 53
    assert {len(line) for line in lines} == {65}
    assert "8388608" not in answers["HELP DATA TYPE"]


# --- What is no topic ---

@pytest.mark.parametrize("typed, topic", [
    ("help create directory;", "create directory;"),
    ("help   Show   Files  ", "Show   Files"),
    ("help copy directory", "copy directory"),
    ("help help", "help"),
    ("help data types", "data types"),
    ("help show kelvo", "show kelvo"),
    ("help createdirectory", "createdirectory"),
    ("help directory", "directory"),
    ("help create directory now", "create directory now"),
    ("  HeLp  x  ", "x"),
    ("help <b>x</b>", "<b>x</b>"),
    ("help 100%s%n", "100%s%n"),
    ('help "quoted"', '"quoted"'),
    ("help \x16\t a\x16\t  b \x16\t", "a\t  b"),
    ("help \\\\", "\\"),
    ("help all;", "all;"),
])
def test_unknown_topic_is_quoted_as_typed_without_the_blanks_around(program, typed, topic):
    assert ask(program, [typed]) == [not_found(topic)]


@pytest.mark.parametrize("word", ["create", "rename", "drop"])
def test_directory_is_a_subtopic_of_create_rename_and_drop_but_not_of_copy(program, word):
    assert ask(program, [f"help {word} directory", "help copy directory"]) == [
        entry(), not_found("copy directory")]


def test_show_kelvo_version_is_a_placeholder_entry(program):
    assert ask(program, ["help show kelvo version"]) == [entry()]


def test_loop_goes_on_after_an_unknown_topic(program):
    assert ask(program, ["help nothing", "help use file"]) == [not_found("nothing"), entry()]
