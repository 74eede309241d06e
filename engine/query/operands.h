// The values in an expression, a batch at a time: where they are in the elements, and what is
// calculated from them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "language/expression.h"
#include "query/kernels.h"
#include "values/text.h"
#include "values/type.h"

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

/// Where a named value is.
struct Field {
  const Type* type = nullptr;        // null for INDEX
  std::size_t offset = 0;            // bytes from the element's first one
  const std::byte* fixed = nullptr;  // the value itself, where it is not part of the elements
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

/// Whether values of the type can be compared: numbers, strings, enumerations, opaque values and
/// references.
bool is_comparable(const Type& type);

/// The value that a field holds: enumerations as their numbers, references as the path that
/// `namer` gives. The field's type must be comparable and outlive the operand, as must the namer.
OperandPointer field_operand(const Field& field, const ReferenceNamer& namer);

/// The names of an enumeration; the number where a value has none.
OperandPointer name_operand(const Field& field, const ReferenceNamer& namer);

OperandPointer constant_operand(std::int64_t value);
OperandPointer constant_operand(std::uint64_t value);
OperandPointer constant_operand(double value);
/// `value` must outlive it.
OperandPointer constant_operand(std::string_view value);

/// left and right must be numbers.
OperandPointer arithmetic_operand(Arithmetic arithmetic, OperandPointer left, OperandPointer right);

/// The same numbers as doubles.
OperandPointer real_operand(OperandPointer number);

}  // namespace kelvo
