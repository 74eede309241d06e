// Elements with all that their varying parts point to as one run of bytes, to be kept or stored.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "values/type.h"

namespace kelvo {

/// Appends the element.
void append_packed(const Type& type, const std::byte* element, std::string* packed);

/// What the varying parts of unpacked elements point to.
using PartMemory = std::deque<std::vector<std::byte>>;

/// Makes the element again from bytes that append_packed made; returns what is behind them.
const char* unpack(const Type& type, const char* packed, std::byte* element, PartMemory* parts);

}  // namespace kelvo
