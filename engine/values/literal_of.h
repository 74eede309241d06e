// Elements back as literals: how values go from one type to another with every check of INSERT.
#pragma once

#include <cstddef>

#include "values/literal.h"
#include "values/text.h"
#include "values/type.h"

namespace kelvo {

/// The element as a literal that writes it. References become the path that `namer` gives.
Literal literal_of(const Type& type, const std::byte* element, const ReferenceNamer& namer);

}  // namespace kelvo
