// What references point to, as text.
#pragma once

#include "storage/handle.h"
#include "values/text.h"

namespace kelvo {

/// Names what references found in `file` point to; `file` (any identifier of it) must stay open
/// while it is used.
ReferenceNamer reference_namer(hid_t file);

/// Makes the object references in the type ones that are written to `file` (any identifier of it),
/// which must stay open while it is used.
void make_references_in(hid_t file, Type* type);

/// The object that a region reference of the file leads to; none where that is gone.
ObjectHandle object_of_region(hid_t file, const std::byte* reference);

/// The elements that a region reference selects in its object, which must be there.
DataspaceHandle region_of(hid_t file, const std::byte* reference);

}  // namespace kelvo
