// Elements as self-contained bytes, with what their varying parts point to: so they can be kept
// outside of memory.
#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "values/type.h"

namespace kelvo {

/// Appends the element to `bytes`: its memory layout, then its varying parts in the order of the
/// type.
void flatten(const Type& type, const std::byte* element, std::vector<std::byte>* bytes);

/// Where elements come back from: reads exactly that many bytes.
class FlatInput {
 public:
  virtual ~FlatInput() = default;
  virtual void read(std::byte* bytes, std::size_t size) = 0;
};

/// Memory for varying parts; a deque never moves what it holds.
using VaryingParts = std::deque<std::vector<std::byte>>;

/// The reverse: fills `element`, its varying parts in `parts`.
void unflatten(const Type& type, FlatInput& input, std::byte* element, VaryingParts* parts);

}  // namespace kelvo
