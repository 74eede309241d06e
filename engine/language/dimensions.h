// The grammar of dimensions: "[n, n TO m, n TO UNLIMITED, ...]".
#pragma once

#include "values/space.h"

namespace kelvo {

class Parser;

/// Dimensions if they are next, else a scalar space. Those of attributes cannot grow.
Space parse_optional_dimensions(Parser& parser, bool can_grow);

}  // namespace kelvo
