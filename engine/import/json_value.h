// What a JSON value means for the type that it is meant for.
#pragma once

#include <cstddef>

#include "values/encoded_elements.h"
#include "values/literal.h"

namespace kelvo {

/// Fills the part of the last element that is at `offset` and of `type`. Numbers come as words with
/// their text, true, false and null as the words TRUE, FALSE and NULL; arrays are lists. The
/// literal is used up. Throws StatementError where it does not fit.
void put_json(EncodedElements& elements, const Type& type, std::size_t offset, Literal& literal);

}  // namespace kelvo
