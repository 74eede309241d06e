// Data that lies in a file as it does in memory.
#pragma once

#include "storage/element_io.h"

namespace kelvo {

/// Whether the place's elements are read by copying them out of one piece of a host file: no
/// filter, conversion, reference, varying part or other file comes in between.
bool lies_plain(const ElementPlace& place);

}  // namespace kelvo
