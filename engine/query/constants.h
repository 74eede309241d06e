// Constants as operands, among them the literals of an expression.
#pragma once

#include <cstdint>
#include <string_view>

#include "query/operand.h"
#include "values/literal.h"
#include "values/type.h"

namespace kelvo {

OperandPointer constant_operand(std::int64_t value);
OperandPointer constant_operand(std::uint64_t value);
OperandPointer constant_operand(double value);
/// `value` must outlive it.
OperandPointer constant_operand(std::string_view value);

/// What the literal says, in the narrowest domain that holds it. It must be a number, a text, TRUE
/// or FALSE, and outlive the operand.
OperandPointer literal_operand(const Literal& literal);

/// A number in the form that suits what it is compared with: values of the domain, which belong to
/// a field of the type (null where they belong to none). The comparison's result is the one with
/// the literal itself, but for fractions: they mean what the type can hold of them, so that "= 0.1"
/// finds a FLOAT that 0.1 was stored in. The literal must outlive the operand.
OperandPointer number_beside(const Literal& literal, const Type* type, Domain domain);

}  // namespace kelvo
