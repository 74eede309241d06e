// The grammar of storage options: CHUNK [n, ...], DEFLATE n, FILL value, ...
#pragma once

#include "values/storage_options.h"

namespace kelvo {

class Parser;

/// The options that are next, in any order, each at most once; none is no error. Throws
/// StatementError with a position at an option that was given before or contradicts one.
StorageOptions parse_storage_options(Parser& parser);

}  // namespace kelvo
