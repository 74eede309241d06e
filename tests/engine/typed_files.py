"""Files that hold one type each, and what the program reads in them."""

import h5py
import numpy as np
from oracle import check_file


def make(kelvo, **datasets):
    """A file with a dataset and an attribute for each of the arrays."""
    with h5py.File(kelvo.path("types.h5"), "w") as file:
        for name, (values, dtype) in datasets.items():
            array = np.empty(len(values), dtype)
            for i, value in enumerate(values):
                array[i] = value
            file.create_dataset(name, data=array, dtype=dtype)
            file.attrs.create(name, array, dtype=dtype)
    return check_file(kelvo, "types.h5")


def write_raw(file, name, type_id, data, count=None):
    """A dataset of that very type, its bytes given as they lie in the file."""
    shape = () if count is None else (count,)
    space = h5py.h5s.create(h5py.h5s.SCALAR) if count is None else h5py.h5s.create_simple(shape)
    dataset = h5py.h5d.create(file.id, name.encode(), type_id, space)
    values = np.frombuffer(data, np.uint8)
    dataset.write(h5py.h5s.ALL, h5py.h5s.ALL, values, type_id)


def raw_file(kelvo, type_id, data, count=None):
    with h5py.File(kelvo.path("raw.h5"), "w") as file:
        write_raw(file, "x", type_id, data, count)
    return kelvo.rows("SELECT * FROM x IN raw.h5")
