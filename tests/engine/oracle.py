"""What a dataset or attribute must show as, told from h5py's reading of it alone.

Numbers of rows, types and forms follow the table of docs/statements/types.md. A row is either the exact text, or, where
the form of a number inside it is open, a Notation that is compared by value.
"""

from dataclasses import dataclass

import h5py
import numpy as np
from notation import read_value, same


@dataclass
class Notation:
    """A row whose value is known but not every digit of its text."""
    value: object

    def matches(self, row):
        return same(read_value(row), self.value)


def as_text(data):
    return data.decode("utf-8", "surrogateescape") if isinstance(data, bytes) else data


def file_type(thing):
    """The low-level type of a dataset or attribute."""
    return (thing if isinstance(thing, h5py.h5a.AttrID) else thing.id).get_type()


class Element:
    """The elements of one low-level type, in the form in which h5py gives them."""

    def __init__(self, type_id, dtype, file):
        self.type = type_id
        self.dtype = dtype
        self.file = file

    @property
    def is_numeric(self):
        return isinstance(self.type, (h5py.h5t.TypeIntegerID, h5py.h5t.TypeFloatID, h5py.h5t.TypeBitfieldID))

    def base(self):
        if isinstance(self.type, h5py.h5t.TypeVlenID):
            return Element(self.type.get_super(), h5py.check_vlen_dtype(self.dtype), self.file)
        return Element(self.type.get_super(), self.dtype.subdtype[0], self.file)

    def number(self, value):
        """Narrow reals keep their type: few digits that read back to the same value suffice for them."""
        if not isinstance(self.type, h5py.h5t.TypeFloatID):
            return int(value)
        return np.float32(value) if self.type.get_size() <= 4 else float(value)

    def number_text(self, value):
        value = self.number(value)
        return str(value) if isinstance(value, int) else "%f" % value

    def string(self, value):
        """Padding is removed as HDF5 defines it for the type."""
        value = value.encode("utf-8", "surrogateescape") if isinstance(value, str) else bytes(value)
        if not self.type.is_variable_str() and self.type.get_strpad() == h5py.h5t.STR_SPACEPAD:
            value = value.rstrip(b" ")
        if self.type.get_strpad() == h5py.h5t.STR_NULLTERM:
            value = value.split(b"\0")[0]
        return as_text(value)

    def enumerated(self, value):
        for i in range(self.type.get_nmembers()):
            if self.type.get_member_value(i) == int(value):
                return as_text(self.type.get_member_name(i))
        return int(value)

    def reference(self, value):
        if not value:
            return ""
        name = as_text(h5py.h5r.get_name(value, self.file.id) or b"")
        if not isinstance(value, h5py.RegionReference):
            return name
        space = h5py.h5r.get_region(value, self.file.id)
        if space.get_simple_extent_ndims() == 0:
            return name
        first, last = space.get_select_bounds()
        return name + "[" + ", ".join(f"{int(a)}:{int(b) + 1}" for a, b in zip(first, last)) + "]"

    def nested(self, value):
        """The value as it stands inside a compound or list."""
        kind = type(self.type)
        if self.is_numeric:
            return self.number(value)
        if kind is h5py.h5t.TypeStringID:
            return None if value is None else self.string(value)
        if kind in (h5py.h5t.TypeEnumID,):
            return self.enumerated(value)
        if kind is h5py.h5t.TypeReferenceID:
            return self.reference(value) or None
        if kind is h5py.h5t.TypeOpaqueID:
            return value.tobytes()
        if kind is h5py.h5t.TypeVlenID:
            return [self.base().nested(item) for item in value]
        if kind is h5py.h5t.TypeArrayID:
            return self.nested_array(np.asarray(value, dtype=self.base().dtype), self.type.get_array_dims())
        return self.compound(value)

    def nested_array(self, values, extents):
        base = self.base()
        if len(extents) == 1:
            return [base.nested(item) for item in values]
        return [self.nested_array(line, extents[1:]) for line in values]

    def compound(self, value):
        members = {}
        for i in range(self.type.get_nmembers()):
            name = as_text(self.type.get_member_name(i))
            if self.dtype.kind == "c":  # h5py makes complex numbers of compounds of two reals
                part, dtype = (value.real, value.imag)[i], value.real.dtype
            else:
                part, dtype = value[name], self.dtype.fields[name][0]
            members[name] = Element(self.type.get_member_type(i), dtype, self.file).nested(part)
        return members

    def row(self, value):
        kind = type(self.type)
        if self.is_numeric:
            return self.number_text(value)
        if kind is h5py.h5t.TypeStringID:
            return self.string(value)
        if kind in (h5py.h5t.TypeEnumID,):
            return str(self.enumerated(value))
        if kind is h5py.h5t.TypeReferenceID:
            return self.reference(value)
        if kind is h5py.h5t.TypeOpaqueID:
            return " ".join(map(str, value.tobytes()))
        if kind in (h5py.h5t.TypeVlenID, h5py.h5t.TypeArrayID) and self.base().is_numeric:
            return " ".join(self.base().number_text(item) for item in np.asarray(value).ravel())
        return Notation(self.nested(value))


def rows_of(element, values, shape):
    """The rows of elements of that shape, from an array that h5py gave."""
    flat = np.asarray(values).reshape((-1, *element.dtype.shape)) if element.dtype.subdtype else np.ravel(values)
    if element.is_numeric and len(shape) >= 2:
        lines = flat.reshape((-1, shape[-1])) if flat.size else []
        return [" ".join(map(element.number_text, line)) for line in lines]
    return [element.row(value) for value in flat]


def in_array(value, dtype):
    """A scalar, or what h5py made of one, as an array of one element."""
    if dtype.subdtype:
        return np.asarray(value)
    array = np.empty(1, dtype)
    array[0] = value
    return array


def expected_dataset(dataset, selection=...):
    if dataset.id.get_space().get_simple_extent_type() == h5py.h5s.NULL:
        return []
    values = dataset[selection] if dataset.shape else in_array(dataset[()], dataset.dtype)
    element = Element(dataset.id.get_type(), dataset.dtype, dataset.file)
    rank = np.ndim(values) - len(element.dtype.shape)
    return rows_of(element, values, np.shape(values)[:rank] if dataset.shape else ())


def expected_attribute(owner, name):
    attribute = h5py.h5a.open(owner.id, name.encode("utf-8", "surrogateescape"))
    if attribute.get_space().get_simple_extent_type() == h5py.h5s.NULL:
        return []
    element = Element(attribute.get_type(), attribute.dtype, owner.file)
    array = np.zeros(attribute.shape, attribute.dtype)
    attribute.read(array)
    return rows_of(element, array, attribute.shape)


def difference(rows, expected):
    """None where the rows are as expected, else the first place where they are not."""
    expected = [line for row in expected for line in (row.split("\n") if isinstance(row, str) else [row])]
    for i, (row, wanted) in enumerate(zip(rows, expected)):
        if not (wanted.matches(row) if isinstance(wanted, Notation) else row == wanted):
            return f"row {i}: {row!r}, not {wanted!r}"
    return None if len(rows) == len(expected) else f"{len(rows)} rows, not {len(expected)}"


def quoted(name):
    return '"' + as_text(name).replace('"', '""') + '"'


def object_names(file):
    """Paths of all datasets, and (path, attribute) of all attributes, in the file."""
    datasets, attributes = [], []

    def visit(path, thing):
        if isinstance(thing, h5py.Dataset):
            datasets.append(path)
        attributes.extend((path, name) for name in thing.attrs)

    visit("/", file)
    file.visititems(lambda path, thing: visit("/" + path, thing))
    return datasets, attributes


def check_file(kelvo, name, open_file=None):
    """Compares every dataset and attribute of the file with h5py's reading; the number of things compared."""
    with (open_file or h5py.File)(kelvo.path(name), "r") as file:
        datasets, attributes = object_names(file)
        expected = {quoted(path): expected_dataset(file[path]) for path in datasets}
        expected.update({f"{quoted(path)}@{quoted(attribute)}": expected_attribute(file[path], attribute)
                         for path, attribute in attributes})
    statements = [f"SELECT * FROM {thing} IN {quoted(name)}" for thing in expected]
    answer = kelvo.run(*statements)
    fault = fault_of(answer, [row for rows in expected.values() for row in rows])
    if fault:
        faults = map(fault_of, map(kelvo.run, statements), expected.values())
        assert [f"{thing}: {one}" for thing, one in zip(expected, faults) if one] == []
        assert False, f"each alone is right, all in one session are not: {fault}"
    return len(expected)


def fault_of(answer, expected):
    return answer.message or difference(answer.rows, expected)
