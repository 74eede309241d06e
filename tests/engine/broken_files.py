"""A dozen small files of every kind of structure, and the statements that read all that is in each."""

import h5py
import numpy as np


def plain(file):
    for name in ("int8", ">u2", "int32", ">i8", "float16", "float32", ">f8"):
        file[name.strip(">")] = np.arange(12).astype(name).reshape(3, 4)
    file["scalar"] = 1.5
    file["empty"] = h5py.Empty("f4")


def groups(file):
    for name in ("a", "a/b", "a/b/c", "d"):
        file.create_group(name)["x"] = np.arange(3)
    file["soft"] = h5py.SoftLink("/a/b")
    file["hard"] = file["a"]
    file["a/b/loop"] = file["a"]
    file["dangling"] = h5py.SoftLink("/none")


def many_links(file):
    group = file.create_group("many", track_order=True)
    for i in range(60):
        group[f"name{i:03}"] = np.int16(i)


def attributes(file):
    file["x"] = [1, 2]
    file["x"].attrs["units"] = "K"
    file["x"].attrs["list"] = np.arange(10)
    file["x"].attrs["names"] = ["one", "two", "three"]
    for i in range(30):
        file.attrs[f"a{i}"] = i


def strings(file):
    file["varying"] = ["one", "two", "", "four" * 50]
    file["fixed"] = np.array([b"a", b"bc", b"def"])
    file["utf8"] = np.array(["ä".encode(), "ö".encode()], dtype=h5py.string_dtype("utf-8", 8))


def compounds(file):
    inner = np.dtype([("x", "f4"), ("y", ">i2")])
    file["nested"] = np.zeros(5, np.dtype([("id", "i4"), ("pos", inner), ("name", "S6"), ("list", "i4", (2, 2))]))
    varying = np.dtype([("id", "i4"), ("text", h5py.string_dtype())])
    file["varying"] = np.array([(1, "a"), (2, "bb")], dtype=varying)


def enumerations(file):
    kind = h5py.enum_dtype({"RED": 0, "GREEN": 1, "BLUE": 42}, basetype="i2")
    file.create_dataset("colours", data=[0, 1, 42, 7], dtype=kind)
    file["flags"] = np.array([True, False])
    file["type"] = np.dtype([("a", "i4"), ("b", "f8")])
    file["opaque"] = np.void(b"\x00\x01\x02\x03")


def sequences(file):
    dataset = file.create_dataset("sequences", (4,), h5py.vlen_dtype("i4"))
    for i in range(4):
        dataset[i] = np.arange(i)
    file["arrays"] = np.zeros(3, np.dtype(("i4", (2, 3))))


def references(file):
    file["x"] = np.arange(20).reshape(4, 5)
    file.create_dataset("objects", data=[file["x"].ref, file.ref], dtype=h5py.ref_dtype)
    file.create_dataset("regions", data=[file["x"].regionref[1:3, 2:4]], dtype=h5py.regionref_dtype)


def chunked(file):
    file.create_dataset("packed", data=np.arange(500), chunks=(64,), compression="gzip", shuffle=True)
    file.create_dataset("summed", data=np.arange(100).reshape(10, 10), chunks=(3, 4), fletcher32=True)
    file.create_dataset("growing", data=np.arange(30), chunks=(7,), maxshape=(None,))
    file.create_dataset("scaled", data=np.arange(100), chunks=(50,), scaleoffset=0)
    file.create_dataset("sparse", (10, 10, 10), "i4", chunks=(2, 2, 2), maxshape=(None, None, 10), fillvalue=-1)


def compact(file):
    plist = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    plist.set_layout(h5py.h5d.COMPACT)
    space = h5py.h5s.create_simple((6,))
    dataset = h5py.h5d.create(file.id, b"compact", h5py.h5t.NATIVE_INT32, space, plist)
    dataset.write(h5py.h5s.ALL, h5py.h5s.ALL, np.arange(6, dtype="int32"))


def virtual(file):
    file["x"] = np.arange(6)
    layout = h5py.VirtualLayout((2, 6), "i8")
    layout[0] = h5py.VirtualSource(".", "x", (6,))
    layout[1] = h5py.VirtualSource(".", "x", (6,))
    file.create_virtual_dataset("virtual", layout)
    file["link"] = h5py.ExternalLink("none.h5", "/x")


CONTENTS = [plain, groups, many_links, attributes, strings, compounds, enumerations, sequences, references, chunked, compact,
            virtual]


def make(content, path, libver):
    with h5py.File(path, "w", libver=libver) as file:
        content(file)


def statements(path):
    """What reads everything that the file holds, once it is in use."""
    lines = ["SHOW GROUP", "SHOW DATASET", "SHOW ATTRIBUTE"]

    def visit(name, node):
        lines.extend([f"SHOW TYPE /{name}", f"SHOW ATTRIBUTE /{name}"])
        lines.extend(f"SELECT * FROM /{name}@{attribute}" for attribute in node.attrs)
        if isinstance(node, h5py.Dataset):
            lines.extend([f"SHOW DATA TYPE /{name}", f"SHOW DIMENSION /{name}", f"SELECT * FROM /{name}"])
        elif isinstance(node, h5py.Group):
            lines.extend([f"SHOW DATASET /{name}", f"SHOW GROUP /{name}"])

    with h5py.File(path) as file:
        lines.extend(f"SELECT * FROM /@{attribute}" for attribute in file.attrs)
        file.visititems(visit)
    return lines + ["SHOW TYPE soft", "SHOW TYPE link", "SELECT * FROM link"]


def make_fatal(path):
    """A file with a virtual dataset "v" whose strings the HDF5 library, which reads those, takes from behind the end of a
    table of its own; and "x", which holds them, and "sound"."""
    with h5py.File(path, "w") as file:
        file["x"] = ["one", "two"]
        file["sound"] = [1, 2, 3]
        layout = h5py.VirtualLayout((2,), h5py.string_dtype())
        layout[:] = h5py.VirtualSource(".", "x", (2,))
        file.create_virtual_dataset("v", layout)
    content = bytearray(path.read_bytes())
    heap = content.rfind(b"GCOL", 0, content.find(b"one\0"))
    reference = content.find((3).to_bytes(4, "little") + heap.to_bytes(8, "little"))
    content[reference + 12:reference + 16] = b"\xff\xff\xff\x0f"  # behind the length and the heap's address: the index
    path.write_bytes(content)
    return content
