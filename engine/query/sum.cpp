// SUM and AVG, which add exactly.
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "error.h"
#include "query/accumulator.h"
#include "query/lanes.h"
#include "query/wide.h"

namespace kelvo {
namespace {

// The halves of a batch's integers, added up: a batch is too short to overflow them. Negative ones
// count 2^64 too much, so that no shift has to mind signs, which costs vectors more.
struct HalfSums {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
  std::uint64_t negative = 0;
};

template <typename Integer>
[[gnu::always_inline]] inline void add_halves(const Integer* numbers, std::size_t count,
                                              HalfSums* sums) {
  HalfSums local;
  for (std::size_t i = 0; i < count; ++i) {
    const auto bits = static_cast<std::uint64_t>(numbers[i]);
    local.low += bits & 0xffffffffU;
    local.high += bits >> 32U;
    if constexpr (std::is_signed_v<Integer>) local.negative += bits >> 63U;
  }
  *sums = local;
}

// The exact sum of integers: high * 2^32 + low.
template <typename Integer>
class ExactSum {
 public:
  void add(const Integer* numbers, std::size_t count) {
    HalfSums sums;
    add_(numbers, count, &sums);
    low_ += sums.low;
    high_ += static_cast<Integer>(sums.high - (sums.negative << 32U) + (low_ >> 32U));
    low_ &= 0xffffffffU;
  }

  /// Whether a BIGINT, or an unsigned one, holds it.
  [[nodiscard]] bool fits(bool is_signed) const {
    if (!is_signed) return high_ >= 0 && static_cast<std::uint64_t>(high_) >> 32U == 0;
    return static_cast<std::int64_t>(high_) >> 31 == 0 ||
           static_cast<std::int64_t>(high_) >> 31 == -1;
  }
  [[nodiscard]] std::uint64_t bits() const {
    return static_cast<std::uint64_t>(high_) << 32U | low_;
  }
  [[nodiscard]] long double real() const {
    return static_cast<long double>(high_) * 4294967296.0L + static_cast<long double>(low_);
  }

 private:
  Integer high_ = 0;
  std::uint64_t low_ = 0;
  void (*add_)(const Integer* numbers, std::size_t count,
               HalfSums* sums) = quickest<add_halves<Integer>>();
};

// Calculates the rounding error without asking which term is larger, so that lanes can do it side
// by side.
[[gnu::always_inline]] inline void add_real(double number, double* sum, double* error) {
  const double total = *sum + number;
  const double added = total - *sum;
  *error += (*sum - (total - added)) + (number - added);
  *sum = total;
}

[[gnu::always_inline]] inline void add_reals(const double* numbers, std::size_t count, double* sums,
                                             double* errors) {
  // Of its own, since the compiler keeps only these in registers.
  std::array<double, lane_count> sum;    // NOLINT(cppcoreguidelines-pro-type-member-init)
  std::array<double, lane_count> error;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  for (std::size_t lane = 0; lane < lane_count; ++lane) {
    sum[lane] = sums[lane];
    error[lane] = errors[lane];
  }
  const std::size_t whole = count - count % lane_count;
  for (std::size_t i = 0; i < whole; i += lane_count) {
    for (std::size_t lane = 0; lane < lane_count; ++lane)
      add_real(numbers[i + lane], &sum[lane], &error[lane]);
  }
  for (std::size_t lane = 0; lane < lane_count; ++lane) {
    sums[lane] = sum[lane];
    errors[lane] = error[lane];
  }
  for (std::size_t i = whole; i < count; ++i) add_real(numbers[i], sums, errors);
}

// A sum of reals whose rounding errors are added up beside it.
template <>
class ExactSum<double> {
 public:
  void add(const double* numbers, std::size_t count) {
    add_(numbers, count, sums_.data(), errors_.data());
  }

  [[nodiscard]] double real() const {
    double sum = 0;
    double error = 0;
    for (const double lane : sums_) add_real(lane, &sum, &error);
    for (const double lane : errors_) error += lane;
    // Once the sum is infinite or NAN, the errors mean nothing.
    return std::isfinite(sum) ? sum + error : sum;
  }

 private:
  Lanes<double> sums_{};
  Lanes<double> errors_{};
  void (*add_)(const double* numbers, std::size_t count, double* sums,
               double* errors) = quickest<add_reals>();
};

template <typename Value>
class Sum : public Accumulator {
 public:
  Sum(Domain domain, std::string label)
      : Accumulator(type_of_domain(domain)), label_(std::move(label)) {}

  void add(const void* values, std::size_t count) override {
    sum_.add(static_cast<const Value*>(values), count);
  }

  void store(std::byte* result) const override {
    if constexpr (std::is_same_v<Value, double>) {
      const double value = sum_.real();
      std::memcpy(result, &value, sizeof value);
    } else {
      if (!sum_.fits(type().is_signed)) {
        throw StatementError(Status::out_of_range, label_ + " does not fit " + type_name(type()) +
                                                       " (a factor of 1.0 makes it DOUBLE)");
      }
      const std::uint64_t bits = sum_.bits();
      std::memcpy(result, &bits, sizeof bits);
    }
  }

 private:
  std::string label_;
  ExactSum<Value> sum_;
};

template <typename Value>
class Average : public Accumulator {
 public:
  Average() : Accumulator(type_of_domain(Domain::real)) {}

  void add(const void* values, std::size_t count) override {
    sum_.add(static_cast<const Value*>(values), count);
    count_ += count;
  }

  void store(std::byte* result) const override {
    using Wide = decltype(sum_.real());
    const double value = count_ == 0 ? std::numeric_limits<double>::quiet_NaN()
                                     : static_cast<double>(sum_.real() / static_cast<Wide>(count_));
    std::memcpy(result, &value, sizeof value);
  }

 private:
  ExactSum<Value> sum_;
  std::uint64_t count_ = 0;
};

bool is_signed(const Type& type) { return type.is_signed && type.kind != Kind::bit_field; }

}  // namespace

AccumulatorPointer make_sum(Domain domain, const Type& argument, const std::string& label) {
  // The sum of unsigned numbers is one, even where they are read as signed ones.
  const Domain result =
      domain == Domain::signed_integer && !is_signed(argument) ? Domain::unsigned_integer : domain;
  return with_number_of(domain, [&](auto number) -> AccumulatorPointer {
    return std::make_unique<Sum<decltype(number)>>(result, label);
  });
}

AccumulatorPointer make_average(Domain domain) {
  return with_number_of(domain, [](auto number) -> AccumulatorPointer {
    return std::make_unique<Average<decltype(number)>>();
  });
}

}  // namespace kelvo
