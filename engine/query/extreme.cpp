// MIN and MAX.
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "error.h"
#include "query/accumulator.h"
#include "query/lanes.h"
#include "query/wide.h"
#include "values/bits.h"

namespace kelvo {
namespace {

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

template <bool least>
AccumulatorPointer make_extreme(Domain domain, const Type& argument, const std::string& label) {
  return with_number_of(domain, [&](auto number) -> AccumulatorPointer {
    return std::make_unique<Extreme<decltype(number), least>>(argument, label);
  });
}

}  // namespace

AccumulatorPointer make_minimum(Domain domain, const Type& argument, const std::string& label) {
  return make_extreme<true>(domain, argument, label);
}

AccumulatorPointer make_maximum(Domain domain, const Type& argument, const std::string& label) {
  return make_extreme<false>(domain, argument, label);
}

}  // namespace kelvo
