// Elements as self-contained bytes, with what their varying parts point to: so they can be kept
// outside of memory.
#pragma once

#include <cstddef>
#include <vector>

#include "values/arena.h"
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

/// Bytes in memory, which must outlive it.
class FlatBytes : public FlatInput {
 public:
  explicit FlatBytes(const std::byte* bytes) : next_(bytes) {}
  void read(std::byte* bytes, std::size_t size) override;

 private:
  const std::byte* next_;
};

/// The reverse: fills `element`, its varying parts in `parts`.
void unflatten(const Type& type, FlatInput& input, std::byte* element, Arena* parts);

}  // namespace kelvo
