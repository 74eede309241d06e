"""Files that name others, and how a statement fails that would have to follow them out of their reach."""

import os

import h5py
import numpy as np

OUTSIDE = -8
MISSING = -3
WRONG_KIND = -5
REFUSED = -9


def write(path, values=(1, 2, 3), **options):
    with h5py.File(path, "w", **options) as file:
        file["x"] = np.array(values, dtype="int32")
        file.create_group("g")["y"] = np.int32(9)


def link(path, target, inner="/x", name="l"):
    with h5py.File(path, "a") as file:
        file[name] = h5py.ExternalLink(str(target), inner)


def virtual(path, source, name="v", inner="x", extent=3):
    layout = h5py.VirtualLayout((extent,), "int32")
    layout[:] = h5py.VirtualSource(str(source), inner, (extent,))
    with h5py.File(path, "a") as file:
        file.create_virtual_dataset(name, layout)


def raw(path, *files, name="r", extent=4):
    with h5py.File(path, "a") as file:
        size = extent // len(files)
        file.create_dataset(name, (extent,), "uint8", external=[(str(raw_file), 0, size) for raw_file in files])


def outside(what, target):
    target = os.path.realpath(target)
    return OUTSIDE, (f'{what} reaches for "{target}", outside the directory of its file (SET EXTERNAL LINK PREFIX '
                     f'"{os.path.dirname(target)}" allows that)')


def allow(folder):
    return f'SET EXTERNAL LINK PREFIX "{folder}"'
