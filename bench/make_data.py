"""Makes the data of the benchmarks, the same every time:  make_data.py FOLDER SCALE"""

import os
import sqlite3
import sys

import h5py
import numpy as np

SEED = 20
BLOCK = 1_000_000


def texts_of(random, count):
    letters = random.integers(97, 123, 40, dtype=np.uint8).tobytes().decode()
    return [letters[:length] for length in random.integers(1, 41, count)]


def smooth(random, count):
    """Readings that change by little from one to the next, so that compression finds something."""
    return np.round(np.cumsum(random.normal(size=count)) * 8) / 8


def write_values(path, scale):
    random = np.random.default_rng(SEED)
    many, some = 10_000_000 // scale, 1_000_000 // scale
    with h5py.File(path, "w") as file:
        widths = random.integers(0, 32, many)
        file["int32"] = (random.integers(-(2**31), 2**31, many) >> widths).astype("i4")
        file["float64"] = random.normal(scale=1000, size=many)
        file["texts"] = texts_of(random, some)
        row = np.dtype([("id", "i4"), ("x", "f8"), ("y", "f8")])
        rows = np.zeros(some, row)
        rows["id"] = np.arange(some)
        rows["x"] = random.normal(size=some)
        rows["y"] = smooth(random, some)
        file["rows"] = rows
        file.create_dataset("deflate", data=smooth(random, many), chunks=(65536,), compression=4, shuffle=True)


def write_tree(path, scale):
    with h5py.File(path, "w", libver="latest") as file:
        for group in range(1000 // scale):
            at = file.create_group(f"group{group}")
            for dataset in range(50):
                at.create_dataset(f"dataset{dataset}", shape=(1,), dtype="i4")


def write_text(path, scale):
    random = np.random.default_rng(SEED)
    with open(path, "w", encoding="ascii") as file:
        for _ in range(10):
            np.savetxt(file, random.normal(scale=1000, size=BLOCK // scale), fmt="%.9g")


def write_table(values_path, path):
    connection = sqlite3.connect(path)
    connection.execute("CREATE TABLE int32 (value INTEGER)")
    connection.execute("CREATE TABLE float64 (value REAL)")
    with h5py.File(values_path) as file:
        for name in ("int32", "float64"):
            connection.executemany(f"INSERT INTO {name} VALUES (?)", ((v,) for v in file[name][:].tolist()))
    connection.commit()


def make(folder, scale):
    """Each file is made under another name first, so that one made by half is made again."""
    os.makedirs(folder, exist_ok=True)
    values = os.path.join(folder, "values.h5")
    makers = {
        "values.h5": lambda path: write_values(path, scale),
        "tree.h5": lambda path: write_tree(path, scale),
        "values.csv": lambda path: write_text(path, scale),
        "values.sqlite": lambda path: write_table(values, path),
    }
    for name, write in makers.items():
        path = os.path.join(folder, name)
        if os.path.exists(path):
            continue
        partial = path + ".partial"
        if os.path.exists(partial):
            os.remove(partial)
        write(partial)
        os.rename(partial, path)


if __name__ == "__main__":
    make(sys.argv[1], int(sys.argv[2]))
