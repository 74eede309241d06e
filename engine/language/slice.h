// The grammar of slices.
#pragma once

#include "values/slice.h"

namespace kelvo {

class Parser;

/// A slice if one is next, else an empty one, which selects everything.
Slice parse_optional_slice(Parser& parser);

}  // namespace kelvo
