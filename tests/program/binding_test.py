"""How the program is bound to its engine, read from the files themselves."""

import os
import re
import subprocess
from pathlib import Path

import pytest
from program import PROGRAM

ENGINES = os.environ["KELVO_BUILT_ENGINES"].split(":")
HEADER = Path(__file__).parents[2] / "executor" / "kelvo.h"

KINDS = ("tinyint unsigned_tinyint smallint unsigned_smallint int unsigned_int bigint unsigned_bigint "
         "float double").split()
OPERATIONS = sorted(
    ["kelvo_execute", "kelvo_error_get_message", "kelvo_error_get_position",
     "kelvo_cursor_next", "kelvo_cursor_get_data_type", "kelvo_cursor_get_char", "kelvo_cursor_clear",
     "kelvo_subcursor_get_count", "kelvo_subcursor_next",
     "_kelvo_show_use_group", "_kelvo_get_last_data_count", "_kelvo_get_architecture", "_kelvo_get_compiler"]
    + ["kelvo_cursor_get_" + kind for kind in KINDS] + ["kelvo_subcursor_get_" + kind for kind in KINDS])


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True, timeout=30).stdout


def symbols(file, which):
    return sorted(line.split()[-1].split("@")[0] for line in output_of("nm", "-D", which, file).splitlines())


def dynamic_section(file, tag):
    return re.findall(rf"\({tag}\).*\[(.*)\]", output_of("readelf", "-d", file))


def test_there_are_33_operations():
    assert len(OPERATIONS) == 33


def test_program_needs_exactly_the_33_operations():
    needed = [symbol for symbol in symbols(PROGRAM, "--undefined-only") if "kelvo" in symbol]
    assert needed == OPERATIONS


def test_program_asks_for_the_library_by_its_soname():
    engines = [name for name in dynamic_section(PROGRAM, "NEEDED") if "kelvo" in name.lower()]
    assert engines == ["libKelvo.so"]


def test_program_has_no_rpath_that_would_win_over_the_environment():
    assert dynamic_section(PROGRAM, "RPATH") == []


def test_program_never_looks_for_the_library_in_the_current_folder():
    """Which an empty entry of the path would make it do."""
    entries = [entry for path in dynamic_section(PROGRAM, "RUNPATH") for entry in path.split(":")]
    assert [entry for entry in entries if not entry.startswith(("/", "$ORIGIN"))] == []


@pytest.mark.parametrize("engine", ENGINES)
def test_engine_bears_the_librarys_name_and_exports_the_operations_alone(engine):
    assert dynamic_section(engine, "SONAME") == ["libKelvo.so"]
    assert symbols(engine, "--defined-only") == OPERATIONS


def test_header_declares_the_operations():
    text = re.sub(r"/\*.*?\*/", "", HEADER.read_text(), flags=re.DOTALL)
    assert sorted(re.findall(r"\b(_?kelvo_\w+)\(", text)) == OPERATIONS


def test_header_names_each_code_once():
    codes = dict(re.findall(r"\bKELVO_(\w+) = (\d+)", HEADER.read_text()))
    del codes["SUCCESS"]
    types = [int(code) for code in codes.values()]
    assert types == [1 << power for power in range(26) if power != 23]
