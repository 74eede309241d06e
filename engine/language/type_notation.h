// Data types as they are written in CREATE: the reader of what values/type.h's notation() writes.
#pragma once

#include "values/type.h"

namespace kelvo {

class Parser;

/// A data type with its byte order or charset. Throws StatementError: with a position where the
/// text is no type, without one where it is a type that cannot be made (CHAR(0), an enumeration's
/// value that does not fit).
Type parse_type(Parser& parser);

}  // namespace kelvo
