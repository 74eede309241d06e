// Fills columns with constants.
#include "query/constants.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

namespace kelvo {
namespace {

template <typename Value>
class Constant : public Operand {
 public:
  explicit Constant(Value value) : Operand(domain_of<Value>) { column_.fill(value); }
  const void* evaluate(const Batch& /*batch*/, const Mask* /*active*/) override {
    return column_.data();
  }

 private:
  Column<Value> column_;
};

// The nearest value of IEEE 754's 16-bit format, as HDF5 and NumPy store it.
double rounded_to_half(double value) {
  if (value == 0 || !std::isfinite(value)) return value;
  int exponent = 0;
  std::frexp(value, &exponent);  // value = f * 2^exponent, f from 0.5
  const double unit = std::ldexp(1.0, std::max(exponent - 1, -14) - 10);
  return std::nearbyint(value / unit) * unit;
}

// What a FLOAT or a half holds of the value; where it cannot hold it at all, the value itself.
double rounded_to(const Type& type, double value) {
  if (type.kind != Kind::real || type.size != 4) return value;
  const double rounded =
      type.file_size == 2 ? rounded_to_half(value) : static_cast<double>(static_cast<float>(value));
  const double most = type.file_size == 2 ? 65504.0 : std::numeric_limits<float>::max();
  return std::fabs(rounded) > most ? value : rounded;
}

OperandPointer integer_constant(const Literal& literal) {
  constexpr std::uint64_t least = std::uint64_t{1} << 63U;  // magnitude of the least BIGINT
  if (literal.kind == LiteralKind::word)
    return constant_operand(std::int64_t{literal.text == "TRUE" ? 1 : 0});
  if (literal.negative && literal.magnitude <= least)
    return constant_operand(static_cast<std::int64_t>(~literal.magnitude + 1));
  if (literal.negative) return constant_operand(-static_cast<double>(literal.magnitude));
  if (literal.magnitude < least)
    return constant_operand(static_cast<std::int64_t>(literal.magnitude));
  return constant_operand(literal.magnitude);
}

// 2.0 compares with integers as 2 does, only quicker.
OperandPointer real_beside_integers(double value) {
  constexpr double beyond_exact = 9007199254740992.0;  // 2^53
  if (std::fabs(value) < beyond_exact && value == std::floor(value))
    return constant_operand(static_cast<std::int64_t>(value));
  return constant_operand(value);
}

OperandPointer real_beside(double value, const Type* type, Domain domain) {
  switch (domain) {
    case Domain::signed_integer:
    case Domain::unsigned_integer:
      return real_beside_integers(value);
    default:
      return constant_operand(type == nullptr ? value : rounded_to(*type, value));
  }
}

// As a real number where that is exact.
OperandPointer integer_beside_reals(const Literal& literal) {
  if (literal.magnitude > std::uint64_t{1} << 53U) return integer_constant(literal);
  const auto size = static_cast<double>(literal.magnitude);
  return constant_operand(literal.negative ? -size : size);
}

}  // namespace

OperandPointer constant_operand(std::int64_t value) {
  return std::make_unique<Constant<std::int64_t>>(value);
}
OperandPointer constant_operand(std::uint64_t value) {
  return std::make_unique<Constant<std::uint64_t>>(value);
}
OperandPointer constant_operand(double value) { return std::make_unique<Constant<double>>(value); }
OperandPointer constant_operand(std::string_view value) {
  return std::make_unique<Constant<std::string_view>>(value);
}

OperandPointer literal_operand(const Literal& literal) {
  if (literal.is_text()) return constant_operand(std::string_view(literal.text));
  if (literal.kind == LiteralKind::real) return constant_operand(literal.real);
  return integer_constant(literal);
}

OperandPointer number_beside(const Literal& literal, const Type* type, Domain domain) {
  if (literal.kind == LiteralKind::real) return real_beside(literal.real, type, domain);
  return domain == Domain::real ? integer_beside_reals(literal) : integer_constant(literal);
}

}  // namespace kelvo
