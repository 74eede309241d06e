// Written values become single elements in memory, once they are found to fit. What has members,
// items or memory of its own is put together from them (values/encoded_elements.h).
#pragma once

#include <cstddef>
#include <string>

#include "values/literal.h"
#include "values/type.h"

namespace kelvo {

/// Writes the element of a type that holds its whole value: numbers, times, fixed strings, opaque
/// values, enumerations, object references; regions are refused. Throws StatementError:
/// out_of_range for a value that does not fit, wrong_kind for one of another kind. Nothing is ever
/// cut or rounded to another integer.
void encode(const Type& type, const Literal& literal, std::byte* element);

/// Throws that the literal is no value of the type.
[[noreturn]] void refuse_kind(const Literal& literal, const Type& type);

/// The index of a compound member's value in an object. Throws StatementError where it is missing.
std::size_t item_of_member(const Literal& object, const std::string& member);

/// Throws StatementError where the object has a value for a member that the compound has not.
void check_member_names(const Literal& object, const Type& compound);

}  // namespace kelvo
