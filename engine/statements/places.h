// From the name in a statement to the place where elements are.
#pragma once

#include "storage/element_io.h"

namespace kelvo {

class Session;
struct Target;

/// Opens the dataset or attribute that the target names.
ElementPlace open_place(const Target& target, Session& session);

}  // namespace kelvo
