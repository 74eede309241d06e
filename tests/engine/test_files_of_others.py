"""Files as other programs and libraries make them: every dataset and attribute reads as h5py reads it."""

import os
import subprocess

import h5py
import numpy as np
import pandas as pd
import pytest
import tables
from oracle import check_file

WORDS = h5py.string_dtype()


@pytest.fixture(autouse=True)
def _plugins(kelvo):
    """Filter plug-ins of others are found, and keep memory when they are unloaded."""
    kelvo.plugins = None
    kelvo.sanitizer_options["detect_leaks"] = 0



# --- h5py: storage ---

def numbers():
    return np.random.default_rng(1).integers(-1000, 1000, (57, 33)).astype("<i4")


STORAGE = {
    "contiguous": {},
    "chunked": {"chunks": (10, 7)},
    "one chunk": {"chunks": (57, 33)},
    "extendible": {"maxshape": (None, None)},
    "deflate": {"chunks": (10, 7), "compression": "gzip", "compression_opts": 9},
    "shuffle and deflate": {"chunks": (10, 7), "shuffle": True, "compression": "gzip"},
    "fletcher32": {"chunks": (10, 7), "fletcher32": True},
    "scale offset": {"chunks": (10, 7), "scaleoffset": 0},
    "szip": {"chunks": (10, 8), "compression": "szip"},
    "lzf": {"chunks": (10, 7), "compression": "lzf"},
    "all": {"chunks": (10, 7), "shuffle": True, "compression": "gzip", "fletcher32": True, "maxshape": (None, 100)},
}


@pytest.mark.parametrize("storage", STORAGE)
def test_layouts_and_filters(kelvo, storage):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("x", data=numbers(), **STORAGE[storage])
        file.create_dataset("y", (57, 33), "<f8", fillvalue=-1.5, **STORAGE[storage])[3:40, ::3] = 2.25
    assert check_file(kelvo, "a.h5") == 2


def test_bit_packing(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
        creation.set_chunk((10, 7))
        creation.set_filter(5)
        type_id = h5py.h5t.STD_I32LE.copy()
        type_id.set_precision(12)
        dataset = h5py.h5d.create(file.id, b"x", type_id, h5py.h5s.create_simple((57, 33)), creation)
        dataset.write(h5py.h5s.ALL, h5py.h5s.ALL, np.ascontiguousarray(numbers()))
    assert kelvo.rows("SELECT * FROM x IN a.h5") == [" ".join(map(str, line)) for line in numbers()]


def test_compact_storage(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
        creation.set_layout(h5py.h5d.COMPACT)
        dataset = h5py.h5d.create(file.id, b"x", h5py.h5t.STD_I16BE, h5py.h5s.create_simple((3, 4)), creation)
        h5py.Dataset(dataset)[...] = np.arange(12).reshape(3, 4)
    assert check_file(kelvo, "a.h5") == 1


@pytest.mark.parametrize("filter_id, options", [(307, (9,)), (32004, (0,)), (32001, (0, 0, 0, 0, 5, 1, 0))],
                         ids=["bzip2", "lz4", "blosc"])
def test_filters_of_plugins(kelvo, filter_id, options):
    """Written by the program of the HDF5 tools that stores a file anew, so that h5py need not know the filter."""
    with h5py.File(kelvo.path("plain.h5"), "w") as file:
        file["x"] = numbers()
    text = f"x:UD={filter_id},0,{len(options)},{','.join(map(str, options))}"
    subprocess.run(["h5repack", "-l", "x:CHUNK=10x7", "-f", text, "plain.h5", "a.h5"], cwd=kelvo.folder, check=True)
    with h5py.File(kelvo.path("a.h5")) as file:
        assert file["x"].id.get_create_plist().get_filter(0)[0] == filter_id
    assert kelvo.rows("SELECT * FROM x IN a.h5") == [" ".join(map(str, line)) for line in numbers()]


def test_lzf_of_data_of_every_kind(kelvo):
    random = np.random.default_rng(2)
    data = {"zeros": np.zeros(100_000, "i4"), "steps": np.repeat(np.arange(300), 333), "text": np.array([b"abcabcabd"] * 9999),
            "noise": random.integers(0, 256, 65536, "u1"), "waves": np.sin(np.arange(50_000) / 100).round(2)}
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        for name, values in data.items():
            file.create_dataset(name, data=values, chunks=(values.size // 3,), compression="lzf", shuffle=name == "waves")
    assert check_file(kelvo, "a.h5") == 5


def test_lzf_written_here_is_read_there(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("x", (3000,), "<i4", chunks=(1000,), compression="lzf")
    values = [n // 7 % 50 * 1000003 for n in range(3000)]
    kelvo.rows("USE FILE a.h5", f"INSERT INTO x VALUES ({', '.join(map(str, values))})")
    with h5py.File(kelvo.path("a.h5")) as file:
        assert list(file["x"]) == values
        assert file["x"].id.get_storage_size() < 12000


def test_filter_that_is_not_there_is_named(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("x", data=np.zeros(1000), chunks=(1000,), compression="lzf")
    # The number of the filter stands in the file's description of the dataset alone; 32767 is nobody's.
    data = kelvo.path("a.h5").read_bytes()
    assert data.count(b"\x00\x7d") >= 1
    kelvo.path("a.h5").write_bytes(data.replace(b"\x00\x7d", b"\xff\x7f"))
    assert kelvo.error("SELECT * FROM x IN a.h5") == (
        -9, 'Dataset "/x" cannot be read: filter 32767 is not available')


def test_virtual_datasets(kelvo):
    for i in range(3):
        with h5py.File(kelvo.path(f"part{i}.h5"), "w") as file:
            file["x"] = np.arange(10) + 100 * i
    layout = h5py.VirtualLayout((4, 10), int)
    for i in range(4):
        layout[i] = h5py.VirtualSource(f"part{i}.h5", "x", (10,))
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_virtual_dataset("x", layout, fillvalue=-1)
    os.chdir(kelvo.folder)  # h5py finds the parts from where it runs
    assert check_file(kelvo, "a.h5") == 1


def test_external_raw_files(kelvo):
    kelvo.path("raw.bin").write_bytes(b"head" + np.arange(12, dtype=">i4").tobytes())
    with h5py.File(kelvo.path("a.h5"), "w") as file:
        file.create_dataset("x", (3, 4), ">i4", external=[("raw.bin", 4, 48)])
    os.chdir(kelvo.folder)
    assert check_file(kelvo, "a.h5") == 1


def test_user_block(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w", userblock_size=1024) as file:
        file["x"] = numbers()
    assert check_file(kelvo, "a.h5") == 1


@pytest.mark.parametrize("version", ["earliest", "v108", "v110", "latest"])
def test_versions_of_the_file_format(kelvo, version):
    with h5py.File(kelvo.path("a.h5"), "w", libver=version, track_order=True) as file:
        for i in range(40):
            group = file.create_group(f"group {i}")
            group.attrs["text"], group.attrs["number"] = "é" * i, i
        for i in range(12):
            file[f"group 0/x{i}"] = np.arange(i)
            file[f"group 0/x{i}"].attrs["large"] = np.arange(7000)
    assert check_file(kelvo, "a.h5") == 104


def test_family_of_files(kelvo):
    with h5py.File(kelvo.path("part%d.h5"), "w", driver="family", memb_size=4096) as file:
        file["x"] = numbers()
    assert len(list(kelvo.folder.glob("part*.h5"))) > 1
    assert kelvo.rows("SELECT * FROM x IN part%d.h5") == [" ".join(map(str, line)) for line in numbers()]


# --- Layouts ---

def test_nexus_like(kelvo):
    with h5py.File(kelvo.path("a.nxs"), "w") as file:
        file.attrs["default"] = "entry"
        entry = file.create_group("entry")
        entry.attrs["NX_class"], entry.attrs["default"] = np.bytes_("NXentry"), "data"
        entry["title"], entry["start_time"] = "A scan of \"X\"", "2024-02-29T12:00:00+01:00"
        data = entry.create_group("data")
        data.attrs["NX_class"], data.attrs["axes"] = "NXdata", np.array(["x", "y"], object)
        data.attrs["signal"] = np.array([b"counts"])
        counts = data.create_dataset("counts", data=numbers().astype("u2"), chunks=(1, 33), maxshape=(None, 33))
        counts.attrs["units"], counts.attrs["long_name"] = "K", np.array(["déjà"], WORDS)
        data["x"], data["y"] = np.linspace(0, 1, 57), np.arange(33, dtype="f4")
        data["link"] = h5py.SoftLink("/entry/data/counts")
        data["x"].attrs["offset"] = np.float32(0.1)
        entry["log/times"] = np.array([1.5, 2.5]).astype(">f8")
    assert check_file(kelvo, "a.nxs") == 15


def test_anndata_like(kelvo):
    with h5py.File(kelvo.path("a.h5ad"), "w") as file:
        file.attrs["encoding-type"], file.attrs["encoding-version"] = "anndata", "0.1.0"
        sparse = file.create_group("X")
        sparse.attrs["encoding-type"], sparse.attrs["shape"] = "csr_matrix", np.array([3, 4])
        sparse["data"], sparse["indices"] = np.array([1, 2.5], "f4"), np.array([0, 3], "i4")
        sparse["indptr"] = np.array([0, 1, 1, 2], "i4")
        observations = file.create_group("obs")
        observations.attrs["_index"], observations.attrs["column-order"] = "index", np.array(["kind", "ok"], object)
        observations["index"] = np.array(["cell-1", "cell-2", "cell-3"], object)
        kind = observations.create_group("kind")
        kind.attrs["ordered"] = False
        kind["categories"], kind["codes"] = np.array(["B", "T"], object), np.array([0, 1, -1], "i1")
        observations["ok"] = np.array([True, False, True])
        file.create_dataset("uns/empty", data=h5py.Empty("f8"))
        file["obsm/pca"] = np.zeros((3, 0))
        file.create_dataset("uns/strings", data=np.array([], object), dtype=WORDS)
    assert check_file(kelvo, "a.h5ad") == 17


def test_matlab_like(kelvo):
    """Version 7.3: a user block, text as numbers, cells as references, a struct as a group."""
    with h5py.File(kelvo.path("a.mat"), "w", userblock_size=512) as file:
        def variable(place, name, data, kind, **attributes):
            dataset = place.create_dataset(name, data=data)
            dataset.attrs["MATLAB_class"] = np.bytes_(kind)
            for key, value in attributes.items():
                dataset.attrs[key] = np.int32(value)
            return dataset
        refs = file.create_group("#refs#")
        cells = [variable(refs, name, np.array([[ord(c)] for c in text], "u2"), "char", MATLAB_int_decode=2)
                 for name, text in (("a", "one"), ("b", "zwölf"))]
        variable(file, "cell", np.array([[cell.ref] for cell in cells], h5py.ref_dtype), "cell")
        variable(file, "empty", np.zeros(2, "u8"), "double", MATLAB_empty=1)
        variable(file, "flag", np.array([[1]], "u1"), "logical", MATLAB_int_decode=1)
        variable(file, "z", np.array([[(1, 2)]], np.dtype([("real", "f8"), ("imag", "f8")])), "double")
        struct = file.create_group("s")
        struct.attrs["MATLAB_class"] = np.bytes_("struct")
        fields = np.empty(2, object)
        fields[0], fields[1] = np.array([b"i", b"d"], "S1"), np.array([b"x"], "S1")
        struct.attrs.create("MATLAB_fields", fields, dtype=h5py.vlen_dtype(np.dtype("S1")))
        variable(struct, "id", np.array([[7.0]]), "double")
        variable(struct, "x", np.arange(6.0).reshape(2, 3), "double")
    with open(kelvo.path("a.mat"), "r+b") as file:
        file.write(b"MATLAB 7.3 MAT-file".ljust(116) + b"\0" * 8 + b"\0\2IM")
    check_file(kelvo, "a.mat")
    assert kelvo.rows("SELECT * FROM cell IN a.mat") == ["/#refs#/a", "/#refs#/b"]
    assert kelvo.rows("SELECT * FROM s@MATLAB_fields IN a.mat") == ["['i', 'd']", "['x']"]


def test_octave_like(kelvo):
    with h5py.File(kelvo.path("a.h5"), "w", track_order=True) as file:
        def variable(name, kind, value):
            group = file.create_group(name)
            group.attrs["OCTAVE_NEW_FORMAT"] = np.uint8(1)
            group["type"] = np.bytes_(kind)
            group["value"] = value
            return group
        variable("x", "matrix", np.arange(6.0).reshape(3, 2))
        variable("flag", "bool", np.float64(1))
        variable("z", "complex scalar", np.array((1, -2), np.dtype([("real", "f8"), ("imag", "f8")])))
        variable("text", "string", np.array([[104, 105]], "i1"))
        base = variable("range", "range", np.array((0, 1, 0.1), np.dtype([("base", "f8"), ("limit", "f8"),
                                                                         ("increment", "f8")])))
        base.attrs["OCTAVE_GLOBAL"] = np.uint8(0)
        file["empty/dims"] = np.array([0, 0], "i4")
    assert check_file(kelvo, "a.h5") == 17


# --- Made by the libraries themselves ---

NETCDF = """
netcdf example {
types:
  byte enum cloud_t {Clear = 0, Cumulus = 1, Stratus = 3};
  compound wind { float speed; int direction(2); };
  int(*) list_t;
  opaque(4) blob_t;
dimensions:
  time = UNLIMITED; lat = 3; lon = 2; letters = 5;
variables:
  double time(time); time:units = "days since 2000-01-01"; time:valid_range = 0., 1e4;
  float temperature(time, lat, lon); temperature:_FillValue = -999.f; temperature:flags = 1b, -2b;
  ushort count(lat); uint64 large(lat); int64 small(lat); ubyte b(lat); short s(lat);
  char name(lat, letters);
  string word(lat);
  cloud_t clouds(lat);
  wind winds(lat);
  list_t lists(lat);
  blob_t blobs(lat);
  :title = "An example"; string :words = "a", "déjà"; :cloud = 1;
  wind :w = {1.5, {2, 3}};
data:
  time = 0, 1.5;
  temperature = 1, 2, 3, 4, 5, 6, 7, 8, 9, _, 11, NaNf;
  count = 0, 1, 65535; large = 18446744073709551614, 0, 1; small = -9223372036854775807, 0, 1; b = 0, 128, 255;
  s = -32767, 0, 1;
  name = "abcde", "fg", "";
  word = "one", "", "zwölf";
  clouds = Clear, Stratus, Cumulus;
  winds = {1, {2, 3}}, {-1.5, {0, 0}}, {0, {1, 1}};
  lists = {1, 2, 3}, {4}, {5, 6};
  blobs = 0x01020304, 0xffffffff, 0x00000000;
group: inner { dimensions: n = 2; variables: int v(n); data: v = 4, 5; }
}
"""


def test_netcdf(kelvo):
    kelvo.path("example.cdl").write_text(NETCDF)
    subprocess.run(["ncgen", "-4", "-o", "a.nc", "example.cdl"], cwd=kelvo.folder, check=True)
    assert check_file(kelvo, "a.nc") > 30
    assert kelvo.rows("SELECT * FROM clouds IN a.nc") == ["Clear", "Stratus", "Cumulus"]


def test_pytables(kelvo):
    class Particle(tables.IsDescription):
        name = tables.StringCol(16)
        number = tables.Int64Col()
        mass = tables.Float32Col(shape=(2, 3))
        flag = tables.BoolCol()
        kind = tables.EnumCol(["red", "green"], "red", base="uint8")
        z = tables.ComplexCol(itemsize=16)

        class Inner(tables.IsDescription):
            x = tables.UInt16Col()
            y = tables.Float16Col()

    with tables.open_file(str(kelvo.path("a.h5")), "w", title="A file") as file:
        for library in ("zlib", "bzip2", "blosc"):
            table = file.create_table("/", f"table_{library}", Particle, filters=tables.Filters(5, library))
            for i in range(20):
                row = table.row
                row["name"], row["number"], row["flag"], row["Inner/x"], row["Inner/y"] = f"p{i}", i, i % 2, i, i / 4
                row["mass"] = np.arange(6).reshape(2, 3) / (i + 1)
                row["kind"], row["z"] = i % 2, complex(i, -i)
                row.append()
            table.flush()
        file.create_array("/group", "array", np.arange(6, dtype=">i2").reshape(2, 3), createparents=True)
        file.create_carray("/group", "carray", obj=np.arange(100.0), filters=tables.Filters(1, "blosc"))
        file.create_earray("/group", "text", tables.StringAtom(5), (0,)).append(np.array([b"a", b"bc"]))
        lists = file.create_vlarray("/group", "lists", tables.Int32Atom())
        lists.append([1, 2, 3])
        lists.append([])
        objects = file.create_vlarray("/group", "objects", tables.ObjectAtom())
        objects.append({"a": 1})
        file.create_array("/group", "flags", np.array([True, False]))
        file.root.group._v_attrs.number, file.root.group._v_attrs.words = 5, "text"
        file.root.group._v_attrs.items = np.array([[1, 2], [3, 4]])
    assert check_file(kelvo, "a.h5") > 60


def test_pytables_times(kelvo):
    class Event(tables.IsDescription):
        short, long = tables.Time32Col(pos=0), tables.Time64Col(pos=1)

    with tables.open_file(str(kelvo.path("a.h5")), "w") as file:
        table = file.create_table("/", "x", Event)
        table.append([(1700000000, 1700000000.25)])
    # PyTables keeps seconds in the upper half of its 64 bits, microseconds in the lower one.
    assert kelvo.rows("SELECT * FROM x IN a.h5") == [
        f"{{short: 1700000000, long: {(1700000000 << 32) + 250000}}}"]


@pytest.mark.parametrize("form", ["fixed", "table"])
def test_pandas(kelvo, form):
    frame = pd.DataFrame({"i": [1, 2, 3], "x": [0.5, np.nan, -1], "word": ["a", "b c", "déjà"], "ok": [True, False, True],
                          "when": pd.to_datetime(["2020-01-01", "2021-06-05 12:34:56.789", None])},
                         index=pd.Index([10, 20, 30], name="key"))
    with pd.HDFStore(kelvo.path("a.h5"), "w", complib="blosc", complevel=5) as store:
        store.put("frame", frame, format=form)
        store.put("series", frame["x"], format=form)
        store.put("deep/er", frame[["i", "x"]], format=form)
    assert check_file(kelvo, "a.h5") > 40
