// Values on their way into a dataset or attribute, from a file or from another dataset.
#pragma once

#include <functional>

#include "values/encoded_elements.h"

namespace kelvo {

class ElementStream {
 public:
  /// Takes a block of elements over; the block is emptied and used again afterwards.
  using Taker = std::function<void(const EncodedElements& block)>;

  ElementStream() = default;
  ElementStream(const ElementStream&) = delete;
  ElementStream& operator=(const ElementStream&) = delete;
  virtual ~ElementStream() = default;

  /// Reads all values as elements of `type`, some thousands at a time. Throws StatementError that
  /// says where one does not fit.
  virtual void read_all(const Type& type, const Taker& take) = 0;
};

}  // namespace kelvo
