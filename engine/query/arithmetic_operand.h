// Values calculated from those of other operands.
#pragma once

#include "language/expression.h"
#include "query/operand.h"

namespace kelvo {

/// left and right must be numbers.
OperandPointer arithmetic_operand(Arithmetic arithmetic, OperandPointer left, OperandPointer right);

/// The same numbers as doubles.
OperandPointer real_operand(OperandPointer number);

}  // namespace kelvo
