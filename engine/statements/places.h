// From the name in a statement to the place where elements are.
#pragma once

#include "storage/element_io.h"
#include "storage/object.h"

namespace kelvo {

class Session;
struct Target;

/// Throws where the target is an attribute; `wanted` is what is meant instead, or none for an
/// object of any kind.
void expect_no_attribute(const Target& target, ObjectKind wanted);

/// Opens the dataset or attribute that the target names.
ElementPlace open_place(const Target& target, Session& session);

}  // namespace kelvo
