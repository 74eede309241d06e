"""Every example of the users' manual prints what the manual says."""

from pathlib import Path

import pytest
from examples import Example, read_page, run_page
from help_texts import MENUS

ROOT = Path(__file__).resolve().parents[2]
# Their rows are those of the build, so that no page can show them.
VERSIONS = {"SHOW KELVO VERSION", "SHOW HDF5 VERSION"}
TOPICS = [keyword for rows in MENUS.values() for keyword, _ in rows[2]
          if keyword not in MENUS and keyword not in {"DATA TYPE", "ALL"}]
PAGES = [page for page in [ROOT / "README.md", *sorted(ROOT.glob("docs/**/*.md"))] if "```kelvo" in page.read_text()]


@pytest.mark.parametrize("page", [pytest.param(page, id=str(page.relative_to(ROOT))) for page in PAGES])
def test_examples_of_the_page_print_what_it_says(kelvo, page):
    run_page(kelvo, page.read_text())


@pytest.fixture(scope="module")
def shown_statements():
    """All statements of the manual's examples, with single blanks."""
    blocks = [block for page in ROOT.glob("docs/**/*.md") for block in read_page(page.read_text())]
    return [" ".join(statement.upper().split()) for block in blocks if isinstance(block, Example)
            for statement, _ in block.steps]


@pytest.mark.parametrize("topic", [topic for topic in TOPICS if topic not in VERSIONS])
def test_every_topic_of_help_has_an_example(shown_statements, topic):
    assert any(f"{statement} ".startswith(f"{topic} ") for statement in shown_statements)


@pytest.mark.parametrize("topic", sorted(VERSIONS))
def test_versions_have_their_forms(topic):
    assert f"    {topic} " in (ROOT / "docs/statements/show.md").read_text()


# --- The runner itself ---

def page_of(*lines):
    return "\n".join(["Text", "```kelvo", *lines, "```", "more text", ""])


def test_page_that_is_right_passes(kelvo):
    run_page(kelvo, page_of("> CREATE FILE a.h5", "> USE FILE a.h5", "> SHOW USE FILE", "/home/me/a.h5") +
             page_of("> USE FILE a.h5", "> SHOW GROUP x", 'Group "/x" does not exist (status -3).',
                     "> SHOW USE GROUP", "/"))


@pytest.mark.parametrize("lines", [
    ["> SHOW USE GROUP", "/"],  # a row that does not come
    ["> CREATE FILE b.h5", "> USE FILE b.h5", "> SHOW USE GROUP"],  # a row that is not shown
    ["> SHOW USE FILE", "No file is in use (status -2)."],  # an error that does not come
    ["> SHOW GROUP"],  # an error that is not shown
], ids=["too much", "too little", "no error", "hidden error"])
def test_page_that_is_wrong_fails(kelvo, lines):
    with pytest.raises(AssertionError, match="the example at line 2 differs"):
        run_page(kelvo, page_of(*lines))


def test_files_of_a_page_are_made(kelvo):
    run_page(kelvo, "```csv marks.csv\n1,2\n```\n")
    assert kelvo.path("marks.csv").read_text() == "1,2\n"


def test_blocks_are_found_with_their_lines():
    [example] = read_page(page_of("> SHOW GROUP", "a", "b", "> FLUSH GLOBAL"))
    assert (example.line, example.steps) == (2, [("SHOW GROUP", ["a", "b"]), ("FLUSH GLOBAL", [])])
