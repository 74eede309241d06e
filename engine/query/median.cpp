// The exact median without keeping the values: each pass counts them by 16 more bits of their order
// and goes on with those that begin like the one looked for; once they are few, they are kept.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "query/accumulator.h"

namespace kelvo {
namespace {

constexpr unsigned step_bits = 16;
constexpr std::size_t step_values = std::size_t{1} << step_bits;
constexpr std::uint64_t few = std::uint64_t{1} << 20U;  // 8 MiB of keys
constexpr std::uint64_t sign = std::uint64_t{1} << 63U;

// Unsigned integers in the order of the values.
std::uint64_t key_of(std::uint64_t value) { return value; }
std::uint64_t key_of(std::int64_t value) { return static_cast<std::uint64_t>(value) ^ sign; }
std::uint64_t key_of(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return (bits & sign) != 0 ? ~bits : bits ^ sign;
}

template <typename Value>
double value_of(std::uint64_t key) {
  if constexpr (std::is_same_v<Value, double>)
    return std::bit_cast<double>((key & sign) != 0 ? key ^ sign : ~key);
  if constexpr (std::is_same_v<Value, std::int64_t>)
    return static_cast<double>(static_cast<std::int64_t>(key ^ sign));
  return static_cast<double>(key);
}

// Values whose keys begin with the same `known` bits, one or both of the middle ones among them.
struct Bucket {
  std::uint64_t prefix = 0;  // the known bits, at the top
  unsigned known = 0;
  bool keeps = false;                  // the values are few: `numbers` are their keys
  std::vector<std::uint64_t> numbers;  // else how many have each value of the next 16 bits
  std::vector<std::uint64_t> ranks;    // of the middle ones among them, from 0

  [[nodiscard]] bool holds(std::uint64_t key) const {
    return known == 0 || (key ^ prefix) >> (64 - known) == 0;
  }
};

template <typename Value>
class Median : public Accumulator {
 public:
  Median() : Accumulator(type_of_domain(Domain::real)), buckets_(1) {
    buckets_[0].numbers.resize(step_values);
  }

  void add(const void* values, std::size_t count) override {
    const auto* numbers = static_cast<const Value*>(values);
    if (first_pass_) count_ += count;
    for (std::size_t i = 0; i < count; ++i) {
      if constexpr (std::is_same_v<Value, double>) is_nan_ = is_nan_ || std::isnan(numbers[i]);
      const std::uint64_t key = key_of(numbers[i]);
      for (Bucket& bucket : buckets_) add_key(bucket, key);
    }
  }

  bool end_pass() override {
    if (first_pass_) {
      if (count_ == 0 || is_nan_) return false;
      buckets_[0].ranks = {(count_ - 1) / 2, count_ / 2};
    }
    first_pass_ = false;
    std::vector<Bucket> next;
    for (Bucket& bucket : buckets_) {
      for (const std::uint64_t rank : bucket.ranks)
        bucket.keeps ? take(bucket, rank) : refine(bucket, rank, &next);
    }
    buckets_ = std::move(next);
    return !buckets_.empty();
  }

  void store(std::byte* result) const override {
    double value = std::numeric_limits<double>::quiet_NaN();
    if (count_ > 0 && !is_nan_) {
      const double low = value_of<Value>(middle_[0]);
      const double high = value_of<Value>(middle_[1]);
      value = low == high ? low : (low + high) / 2;
      if (std::isinf(value)) value = low / 2 + high / 2;
    }
    std::memcpy(result, &value, sizeof value);
  }

 private:
  static void add_key(Bucket& bucket, std::uint64_t key) {
    if (!bucket.holds(key)) return;
    if (bucket.keeps) {
      bucket.numbers.push_back(key);
    } else {
      const std::uint64_t step = key >> (64 - step_bits - bucket.known) & (step_values - 1);
      ++bucket.numbers[static_cast<std::size_t>(step)];
    }
  }

  void take(Bucket& bucket, std::uint64_t rank) {
    const auto at = bucket.numbers.begin() + static_cast<std::ptrdiff_t>(rank);
    std::nth_element(bucket.numbers.begin(), at, bucket.numbers.end());
    middle_.push_back(*at);
  }

  // Goes on with the part of the bucket that the rank is in.
  void refine(const Bucket& bucket, std::uint64_t rank, std::vector<Bucket>* next) {
    std::size_t step = 0;
    while (rank >= bucket.numbers[step]) rank -= bucket.numbers[step++];
    const unsigned known = bucket.known + step_bits;
    const std::uint64_t prefix = bucket.prefix | std::uint64_t{step} << (64 - known);
    if (known == 64) return middle_.push_back(prefix);
    if (next->empty() || next->back().prefix != prefix) {
      Bucket part;
      part.prefix = prefix;
      part.known = known;
      part.keeps = bucket.numbers[step] <= few;
      if (!part.keeps) part.numbers.resize(step_values);
      next->push_back(std::move(part));
    }
    next->back().ranks.push_back(rank);
  }

  std::uint64_t count_ = 0;
  bool first_pass_ = true;
  bool is_nan_ = false;
  std::vector<Bucket> buckets_;
  std::vector<std::uint64_t> middle_;  // keys of the two in the middle, which may be the same one
};

}  // namespace

AccumulatorPointer make_median(Domain domain) {
  return with_number_of(domain, [](auto number) -> AccumulatorPointer {
    return std::make_unique<Median<decltype(number)>>();
  });
}

}  // namespace kelvo
