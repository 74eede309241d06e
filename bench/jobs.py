"""What is measured: one row a job. A command is a list of words; {build} is the build folder, {data} the data's, {n} the
number of values in memory. The first entry of a job is what the others are compared with."""

from collections import namedtuple

# same: the program must write the limit's very bytes, which is checked before anything is measured.
Job = namedtuple("Job", "name same entries")

PYTHON = "/usr/bin/python3"
PROGRAM = "{build}/cli/kelvocli"
LIMIT = "{build}/bench/limit"
MEMORY = "LD_LIBRARY_PATH={build}/bench/memory"

IN_BLOCKS = """
import sys, h5py
with h5py.File('{data}/values.h5') as file:
    data = file['NAME']
    for start in range(0, len(data), 65536):
        sys.stdout.write(''.join(['FORMAT\\n' % (VALUE) for v in data[start:start + 65536].tolist()]))
"""
COUNT = """
import h5py
with h5py.File('{data}/values.h5') as file:
    data = file['NAME']
    print(sum(int((data[start:start + 65536] > 1).sum()) for start in range(0, len(data), 65536)))
"""
LARGEST = """
import h5py
with h5py.File('{data}/values.h5') as file:
    data = file['NAME']
    print(max(data[start:start + 65536].max() for start in range(0, len(data), 65536)))
"""
LOAD = """
import h5py, numpy
with h5py.File('peer.h5', 'w') as file:
    file['x'] = numpy.loadtxt('{data}/values.csv')
"""


def python(text, name="", form="", value="v"):
    return [PYTHON, "-c", text.replace("NAME", name).replace("FORMAT", form).replace("VALUE", value)]


def statement(text):
    return [PROGRAM, "--no-path", "--no-status", "--execute=" + text]


def limit(name, argument="{data}/values.h5"):
    return [LIMIT, name, argument]


def memory(kind):
    entries = {
        "limit": limit("memory-" + kind, "{n}"),
        "kelvocli": ["env", MEMORY] + statement(kind + " {n}"),
    }
    return Job("in memory: " + kind, True, entries)


def h5dump(name):
    return ["h5dump", "-d", "/" + name, "{data}/values.h5"]


JOBS = [
    Job("print int32", True, {
        "limit": limit("int32"),
        "kelvocli": statement("SELECT * FROM /int32 IN {data}/values.h5"),
        "python blocks": python(IN_BLOCKS, "int32", "%d"),
        "ncdump": ["ncdump", "-v", "int32", "{data}/values.h5"],
        "h5dump": h5dump("int32"),
        "sqlite3": ["sqlite3", "{data}/values.sqlite", "SELECT value FROM int32"],
    }),
    Job("print float64", True, {
        "limit": limit("float64"),
        "kelvocli": statement("SELECT * FROM /float64 IN {data}/values.h5"),
        "python blocks": python(IN_BLOCKS, "float64", "%f"),
        "ncdump": ["ncdump", "-v", "float64", "{data}/values.h5"],
        "h5dump": h5dump("float64"),
        "sqlite3": ["sqlite3", "{data}/values.sqlite", "SELECT value FROM float64"],
    }),
    Job("print strings", True, {
        "limit": limit("texts"),
        "kelvocli": statement("SELECT * FROM /texts IN {data}/values.h5"),
        "python blocks": python(IN_BLOCKS, "texts", "%s", "v.decode()"),
        "h5dump": h5dump("texts"),
    }),
    Job("print compound", False, {
        "limit": limit("rows"),
        "kelvocli": statement("SELECT * FROM /rows IN {data}/values.h5"),
        "python blocks": python(IN_BLOCKS, "rows", "{{id: %d, x: %r, y: %r}}"),
        "h5dump": h5dump("rows"),
    }),
    Job("count where", True, {
        "limit": limit("count"),
        "kelvocli": statement("SELECT COUNT(*) FROM /float64 IN {data}/values.h5 WHERE VALUE > 1"),
        "python blocks": python(COUNT, "float64"),
        "sqlite3": ["sqlite3", "{data}/values.sqlite", "SELECT count(*) FROM float64 WHERE value > 1"],
    }),
    Job("count where, deflate", True, {
        "limit": limit("deflate"),
        "kelvocli": statement("SELECT COUNT(*) FROM /deflate IN {data}/values.h5 WHERE VALUE > 1"),
        "python blocks": python(COUNT, "deflate"),
    }),
    Job("read deflate", True, {
        "limit": limit("deflate-largest"),
        "kelvocli": statement("SELECT MAX(VALUE) FROM /deflate IN {data}/values.h5"),
        "H5Dread": limit("deflate-library"),
        "python blocks": python(LARGEST, "deflate"),
    }),
    Job("list objects", False, {
        "limit": limit("list", "{data}/tree.h5"),
        "kelvocli": statement("SHOW DATASET / IN {data}/tree.h5 RECURSIVE"),
        "h5ls": ["h5ls", "-r", "{data}/tree.h5"],
        "h5dump": ["h5dump", "-n", "{data}/tree.h5"],
    }),
    Job("csv in", False, {
        "limit": limit("csv", "{data}/values.csv"),
        "kelvocli": statement("CREATE OR REPLACE FILE out.h5\nUSE FILE out.h5\n"
                              "CREATE DATASET x DOUBLE [0 TO UNLIMITED]\nINSERT INTO x APPEND FROM {data}/values.csv"),
        "numpy.loadtxt": python(LOAD),
    }),
    Job("start: --version", False, {
        "h5ls": ["h5ls", "{data}/tiny.h5"],
        "kelvocli": [PROGRAM, "--version"],
    }),
    Job("start: --help", False, {
        "h5ls": ["h5ls", "{data}/tiny.h5"],
        "kelvocli": [PROGRAM, "--help"],
    }),
    Job("start: a statement", False, {
        "h5ls": ["h5ls", "{data}/tiny.h5"],
        "kelvocli": statement("SHOW USE FILE"),
        "import h5py": [PYTHON, "-c", "import h5py"],
    }),
] + [memory(kind) for kind in ("int32", "int64", "float64", "int32-lists", "int64-lists", "float64-lists", "texts")]
