// The grammar of written values.
#pragma once

#include <vector>

#include "values/literal.h"

namespace kelvo {

class Parser;

/// One value. Throws StatementError with its position when there is none.
Literal parse_literal(Parser& parser);

/// "(v, v, ...)": at least one value.
std::vector<Literal> parse_value_list(Parser& parser);

}  // namespace kelvo
