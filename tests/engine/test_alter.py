"""ALTER DATASET, read back with h5py."""

import h5py
import numpy as np
import pytest


@pytest.fixture
def x(kelvo):
    """Alters a dataset of 4 x 3 (at most 10 x unlimited) and gives its values."""
    with h5py.File(kelvo.path("a.h5"), "w") as made:
        made.create_dataset("x", data=np.arange(12).reshape(4, 3), maxshape=(10, None), chunks=(2, 2), fillvalue=-1)
        made["fixed"] = [1, 2]

    def alter(dimensions):
        kelvo.rows("USE FILE a.h5", f"ALTER DATASET x DIMENSION {dimensions}")
        with h5py.File(kelvo.path("a.h5"), "r") as made:
            return made["x"][()]

    return alter


def test_extents_grow_and_shrink(x):
    old = np.arange(12).reshape(4, 3)
    grown = x("[6, 4]")
    assert grown.shape == (6, 4) and (grown[:4, :3] == old).all() and (grown[4:] == -1).all() and (grown[:, 3] == -1).all()
    assert (x("[2, 2]") == old[:2, :2]).all()


def test_relative_extents(x):
    assert x("[+2, *]").shape == (6, 3)
    assert x("[-6, + 4]").shape == (0, 7)


@pytest.mark.parametrize("dimensions, message", [
    ("[11, 3]", 'Dataset "/x" has at most extent 10 in dimension 0'),
    ("[+7, 3]", 'Dataset "/x" has at most extent 10 in dimension 0'),
    ("[4, -4]", 'Dataset "/x" has extent 3 in dimension 1, too little for -4'),
    (f"[10, {2**63}]", 'Dataset "/x" would have more elements than can be counted'),
    ("[4]", 'Dataset "/x" has 2 dimensions, 1 is given'),
    ("[4, 3, 2]", 'Dataset "/x" has 2 dimensions, 3 are given')])
def test_extents_out_of_range(kelvo, x, dimensions, message):
    assert kelvo.error("USE FILE a.h5", f"ALTER DATASET x DIMENSION {dimensions}") == (-6, message)
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert made["x"].shape == (4, 3)


def test_other_errors(kelvo, x):
    def error(statement):
        return kelvo.error("USE FILE a.h5", statement)

    assert error("ALTER DATASET fixed DIMENSION [3]") == (
        -5, 'Dataset "/fixed" is not chunked, so its extents are fixed (COPY DATASET with CHUNK stores it anew)')
    assert error("ALTER DATASET / DIMENSION [3]") == (-5, '"/" is a group, not a dataset')
    assert error("ALTER DATASET no DIMENSION [3]") == (-3, 'Dataset "/no" does not exist')
    assert error("ALTER DATASET x DIMENSION []") == (-1, 'Expected an extent, +n, -n or "*", found "]"', 28)
    assert error("ALTER DATASET x [3]") == (-1, 'Expected DIMENSION, found "["', 17)
    assert error("ALTER GROUP x") == (-1, 'Expected DATASET, found "GROUP"', 7)
