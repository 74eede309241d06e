// Columns from columns.
#include "query/arithmetic_operand.h"

#include <array>
#include <string>
#include <utility>

#include "error.h"
#include "query/arithmetic_kernel.h"

namespace kelvo {
namespace {

[[noreturn]] void fail_arithmetic(Fault fault, Arithmetic arithmetic) {
  const std::string symbol = quoted(symbol_of(arithmetic));
  if (fault == Fault::division_by_zero) {
    throw StatementError(Status::out_of_range,
                         "Division of an integer by zero in " + symbol +
                             " (a divisor with a fraction, such as 1.0 * n, gives INF)");
  }
  throw StatementError(Status::out_of_range,
                       "The result of " + symbol +
                           " is out of the range of integers (a factor of 1.0 makes it DOUBLE)");
}

class Calculation : public Operand {
 public:
  Calculation(Arithmetic arithmetic, OperandPointer left, OperandPointer right)
      : Operand(arithmetic_domain(arithmetic, left->domain(), right->domain())),
        arithmetic_(arithmetic),
        kernel_(arithmetic_kernel(arithmetic, left->domain(), right->domain())),
        left_(std::move(left)),
        right_(std::move(right)) {}

  const void* evaluate(const Batch& batch, const Mask* active) override {
    const void* left = left_->evaluate(batch, active);
    const void* right = right_->evaluate(batch, active);
    const Fault fault = kernel_(left, right, batch.count, active, column_.data());
    if (fault != Fault::none) fail_arithmetic(fault, arithmetic_);
    return column_.data();
  }

 private:
  Arithmetic arithmetic_;
  ArithmeticKernel kernel_;
  OperandPointer left_;
  OperandPointer right_;
  // Of whatever type the domain says: all numbers have the same size.
  alignas(std::uint64_t) std::array<std::byte, batch_size * sizeof(std::uint64_t)> column_{};
};

template <typename From>
class AsReal : public Operand {
 public:
  explicit AsReal(OperandPointer number) : Operand(Domain::real), number_(std::move(number)) {}

  const void* evaluate(const Batch& batch, const Mask* active) override {
    const auto* numbers = static_cast<const From*>(number_->evaluate(batch, active));
    for (std::size_t i = 0; i < batch.count; ++i) column_[i] = static_cast<double>(numbers[i]);
    return column_.data();
  }

 private:
  OperandPointer number_;
  Column<double> column_;
};

}  // namespace

OperandPointer arithmetic_operand(Arithmetic arithmetic, OperandPointer left,
                                  OperandPointer right) {
  if (left->domain() == Domain::real) right = real_operand(std::move(right));
  if (right->domain() == Domain::real) left = real_operand(std::move(left));
  return std::make_unique<Calculation>(arithmetic, std::move(left), std::move(right));
}

OperandPointer real_operand(OperandPointer number) {
  if (number->domain() == Domain::signed_integer)
    return std::make_unique<AsReal<std::int64_t>>(std::move(number));
  if (number->domain() == Domain::unsigned_integer)
    return std::make_unique<AsReal<std::uint64_t>>(std::move(number));
  return number;
}

}  // namespace kelvo
