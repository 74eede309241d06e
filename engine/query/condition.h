// What is true or false for each element: comparisons of operands, and AND, OR and NOT of them.
#pragma once

#include <memory>
#include <vector>

#include "query/compare_kernel.h"
#include "query/operand.h"
#include "values/pattern.h"

namespace kelvo {

/// Something that is true or false for each element of a batch.
class Condition {
 public:
  Condition() = default;
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;
  virtual ~Condition() = default;

  /// Sets out[i] for each element, to 0 where active[i] is 0. Throws StatementError where an active
  /// element's value cannot be calculated.
  virtual void evaluate(const Batch& batch, const Mask* active, Mask* out) = 0;
};

using ConditionPointer = std::unique_ptr<Condition>;

/// An active mask with a 1 for each element of a batch.
const Mask* all_active();

/// False for every element.
ConditionPointer never();

/// The kernel must be the one for the domains of the operands.
ConditionPointer comparing(CompareKernel kernel, OperandPointer left, OperandPointer right);

/// AND, and OR, of at least one part: a part is asked only about the elements that are still open,
/// so that "n <> 0 AND x / n > 2" divides by no zero.
ConditionPointer all_of(std::vector<ConditionPointer> parts);
ConditionPointer any_of(std::vector<ConditionPointer> parts);

ConditionPointer negation(ConditionPointer operand);

/// LIKE. `text` must be of the domain text.
ConditionPointer matching(OperandPointer text, LikePattern pattern);

/// `real` must be of the domain real.
ConditionPointer being_nan(OperandPointer real);

/// IN, with constants of the operand's own domain, which `Value` is the type of: int64_t or
/// string_view. What views show must outlive the result.
template <typename Value>
ConditionPointer being_in(OperandPointer operand, std::vector<Value> values);

}  // namespace kelvo
