// Keys of ORDER BY as bytes whose order is that of the values, so that sorting asks nothing about
// types.
#pragma once

#include <cstddef>
#include <string>

#include "query/operands.h"

namespace kelvo {

/// Appends the key of value i of a column. Descending keys are in the opposite order; NAN comes
/// last in both.
void append_key(Domain domain, const void* column, std::size_t i, bool descending,
                std::string* key);

}  // namespace kelvo
