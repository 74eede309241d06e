// The values in an expression, a batch at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "query/column.h"
#include "query/mask.h"

namespace kelvo {

/// Up to batch_size elements that lie side by side in memory.
struct Batch {
  const std::byte* elements = nullptr;
  std::size_t stride = 0;  // bytes from one to the next
  std::size_t count = 0;
  std::int64_t position = 0;  // of the first in its dataset of one dimension; for INDEX
  std::int64_t step = 1;      // from one's position to the next one's
  std::uint64_t ordinal = 0;  // of the first among all that are read, from 0
};

/// Something that has a value for each element of a batch.
class Operand {
 public:
  explicit Operand(Domain domain) : domain_(domain) {}
  Operand(const Operand&) = delete;
  Operand& operator=(const Operand&) = delete;
  virtual ~Operand() = default;

  [[nodiscard]] Domain domain() const noexcept { return domain_; }

  /// Its values, of the type that its domain says; good until the next call. Throws StatementError
  /// where one that `active` has a 1 for cannot be calculated.
  virtual const void* evaluate(const Batch& batch, const Mask* active) = 0;

 private:
  Domain domain_;
};

using OperandPointer = std::unique_ptr<Operand>;

}  // namespace kelvo
