// The grammar of dimensions: "[n, n TO m, n TO UNLIMITED, ...]".
#pragma once

#include "values/space.h"

namespace kelvo {

class Parser;

/// Dimensions if they are next, else a scalar space.
Space parse_optional_dimensions(Parser& parser);

}  // namespace kelvo
