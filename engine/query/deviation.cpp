// STDDEV in one pass.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "query/accumulator.h"
#include "query/lanes.h"

namespace kelvo {
namespace {

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

}  // namespace

AccumulatorPointer make_deviation(Domain domain) {
  return with_number_of(domain, [](auto number) -> AccumulatorPointer {
    return std::make_unique<Deviation<decltype(number)>>();
  });
}

}  // namespace kelvo
