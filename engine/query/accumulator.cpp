// Counting, extremes, sums, averages and deviations.
#include "query/accumulator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "error.h"
#include "query/projection.h"
#include "query/wide.h"
#include "values/bits.h"

namespace kelvo {
namespace {

// Independent partial results side by side, which the compiler keeps in vector registers: a single
// one would make each step wait for the one before it.
constexpr std::size_t lane_count = 8;

template <typename Value>
using Lanes = std::array<Value, lane_count>;

template <typename Value, bool least>
[[gnu::always_inline]] inline Value better(Value one, Value other) {
  if constexpr (least) return one < other ? one : other;
  return one > other ? one : other;
}

// Goes on from `best`, passing over NAN.
template <typename Value, bool least>
[[gnu::always_inline]] inline void find_extreme(const Value* numbers, std::size_t count,
                                                Value* best) {
  Lanes<Value> lanes;
  lanes.fill(*best);
  const std::size_t whole = count - count % lane_count;
  for (std::size_t i = 0; i < whole; i += lane_count) {
    for (std::size_t lane = 0; lane < lane_count; ++lane)
      lanes[lane] = better<Value, least>(numbers[i + lane], lanes[lane]);
  }
  for (std::size_t i = whole; i < count; ++i) lanes[0] = better<Value, least>(numbers[i], lanes[0]);
  for (const Value one : lanes) *best = better<Value, least>(one, *best);
}

[[gnu::always_inline]] inline void find_nan(const double* numbers, std::size_t count, bool* found) {
  std::uint64_t nans = 0;
  for (std::size_t i = 0; i < count; ++i) nans |= std::isnan(numbers[i]) ? 1U : 0U;
  *found = *found || nans != 0;
}

class Counter : public Accumulator {
 public:
  Counter() : Accumulator(type_of_domain(Domain::unsigned_integer)) {}
  void add(const void* /*values*/, std::size_t count) override { count_ += count; }
  void store(std::byte* result) const override { std::memcpy(result, &count_, sizeof count_); }

 private:
  std::uint64_t count_ = 0;
};

// The type of an argument as a result has it: in the machine's byte order.
Type result_type(Type type) {
  if (type.kind == Kind::time) type.kind = Kind::integer;
  type.order = machine_order();
  return type;
}

template <typename Value, bool least>
class Extreme : public Accumulator {
 public:
  Extreme(const Type& argument, std::string label)
      : Accumulator(result_type(argument)), label_(std::move(label)) {}

  void add(const void* values, std::size_t count) override {
    const auto* numbers = static_cast<const Value*>(values);
    if (count == 0) return;
    if (!found_) best_ = numbers[0];
    found_ = true;
    find_(numbers, count, &best_);
    if constexpr (std::is_same_v<Value, double>) find_nan_(numbers, count, &is_nan_);
  }

  void store(std::byte* result) const override {
    if (!found_)
      throw StatementError(Status::out_of_range, label_ + " has no value: no element is selected");
    if constexpr (std::is_same_v<Value, double>) {
      const double value = is_nan_ ? std::numeric_limits<double>::quiet_NaN() : best_;
      const auto single = static_cast<float>(value);
      if (type().size == sizeof single) {
        std::memcpy(result, &single, sizeof single);
      } else {
        std::memcpy(result, &value, sizeof value);
      }
    } else {
      store_integer(static_cast<std::uint64_t>(best_), type().size, machine_order(), result);
    }
  }

 private:
  std::string label_;
  void (*find_)(const Value* numbers, std::size_t count,
                Value* best) = quickest<find_extreme<Value, least>>();
  void (*find_nan_)(const double* numbers, std::size_t count, bool* found) = quickest<find_nan>();
  Value best_{};
  bool found_ = false;
  bool is_nan_ = false;
};

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

// Mean and sum of squared distances from it, batch by batch: each batch is measured from its own
// mean, so that large values with small distances lose nothing.
template <typename Value>
class Deviation : public Accumulator {
 public:
  Deviation() : Accumulator(type_of_domain(Domain::real)) {}

  void add(const void* values, std::size_t count) override {
    const auto* numbers = static_cast<const Value*>(values);
    for (std::size_t begin = 0; begin < count; begin += batch_size)
      add_batch(numbers + begin, std::min(batch_size, count - begin));
  }

  void store(std::byte* result) const override {
    const double value =
        count_ > 0 ? std::sqrt(squares_ / count_) : std::numeric_limits<double>::quiet_NaN();
    std::memcpy(result, &value, sizeof value);
  }

 private:
  void add_batch(const Value* numbers, std::size_t count) {
    const auto size = static_cast<double>(count);
    const double mean = lanes_total(numbers, count, [](double number) { return number; }) / size;
    const double squares = lanes_total(
        numbers, count, [mean](double number) { return (number - mean) * (number - mean); });
    const double distance = mean - mean_;
    const double total = count_ + size;
    squares_ += squares + distance * distance * count_ * size / total;
    mean_ += distance * size / total;
    count_ = total;
  }

  template <typename Function>
  static double lanes_total(const Value* numbers, std::size_t count, const Function& function) {
    Lanes<double> lanes{};
    const std::size_t whole = count - count % lane_count;
    for (std::size_t i = 0; i < whole; i += lane_count) {
      for (std::size_t lane = 0; lane < lane_count; ++lane)
        lanes[lane] += function(static_cast<double>(numbers[i + lane]));
    }
    for (std::size_t i = whole; i < count; ++i)
      lanes[0] += function(static_cast<double>(numbers[i]));
    double total = 0;
    for (const double lane : lanes) total += lane;
    return total;
  }

  double count_ = 0;
  double mean_ = 0;
  double squares_ = 0;
};

bool is_signed(const Type& type) { return type.is_signed && type.kind != Kind::bit_field; }

template <typename Value>
AccumulatorPointer make_for(Aggregate aggregate, Domain domain, const Type& argument,
                            const std::string& label) {
  switch (aggregate) {
    case Aggregate::minimum:
      return std::make_unique<Extreme<Value, true>>(argument, label);
    case Aggregate::maximum:
      return std::make_unique<Extreme<Value, false>>(argument, label);
    case Aggregate::sum:
      // The sum of unsigned numbers is one, even where they are read as signed ones.
      return std::make_unique<Sum<Value>>(domain == Domain::signed_integer && !is_signed(argument)
                                              ? Domain::unsigned_integer
                                              : domain,
                                          label);
    case Aggregate::average:
      return std::make_unique<Average<Value>>();
    case Aggregate::deviation:
      return std::make_unique<Deviation<Value>>();
    case Aggregate::median:
      return make_median(domain);
    default:
      return std::make_unique<Counter>();
  }
}

}  // namespace

AccumulatorPointer make_accumulator(Aggregate aggregate, Domain domain, const Type& argument,
                                    const std::string& label) {
  switch (domain) {
    case Domain::signed_integer:
      return make_for<std::int64_t>(aggregate, domain, argument, label);
    case Domain::unsigned_integer:
      return make_for<std::uint64_t>(aggregate, domain, argument, label);
    case Domain::real:
      return make_for<double>(aggregate, domain, argument, label);
    case Domain::text:
      break;
  }
  return std::make_unique<Counter>();
}

}  // namespace kelvo
