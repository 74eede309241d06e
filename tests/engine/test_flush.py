"""FLUSH."""

import h5py


def test_flush_of_the_file_in_use(kelvo):
    kelvo.rows("CREATE FILE a.h5", "USE FILE a.h5", "CREATE GROUP g", "FLUSH GLOBAL", "flush local;")
    with h5py.File(kelvo.path("a.h5"), "r") as made:
        assert list(made) == ["g"]


def test_flush_errors(kelvo):
    assert kelvo.error("FLUSH GLOBAL") == (-2, "No file is in use (USE FILE opens one)")
    assert kelvo.error("FLUSH") == (-1, "Expected GLOBAL or LOCAL, found the end of the statement", 6)
    assert kelvo.error("FLUSH LOCAL x") == (-1, 'Expected the end of the statement, found "x"', 13)
