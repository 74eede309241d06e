// What references point to, as text.
#pragma once

#include "storage/handle.h"
#include "values/text.h"

namespace kelvo {

/// Names what references found in `file` point to; `file` (any identifier of it) must stay open
/// while it is used.
ReferenceNamer reference_namer(hid_t file);

}  // namespace kelvo
