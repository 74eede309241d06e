// Named values as operands: where they are in the elements.
#pragma once

#include <cstddef>

#include "query/operand.h"
#include "values/text.h"
#include "values/type.h"

namespace kelvo {

/// Where a named value is.
struct Field {
  const Type* type = nullptr;        // null for INDEX
  std::size_t offset = 0;            // bytes from the element's first one
  const std::byte* fixed = nullptr;  // the value itself, where it is not part of the elements
};

/// Whether values of the type can be compared: numbers, strings, enumerations, opaque values and
/// references.
bool is_comparable(const Type& type);

/// The value that a field holds: enumerations as their numbers, references as the path that
/// `namer` gives. The field's type must be comparable and outlive the operand, as must the namer.
OperandPointer field_operand(const Field& field, const ReferenceNamer& namer);

/// The names of an enumeration; the number where a value has none.
OperandPointer name_operand(const Field& field, const ReferenceNamer& namer);

}  // namespace kelvo
