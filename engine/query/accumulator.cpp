// Counting, and the choice of an accumulator for each aggregate.
#include "query/accumulator.h"

#include <cstring>

namespace kelvo {
namespace {

class Counter : public Accumulator {
 public:
  Counter() : Accumulator(type_of_domain(Domain::unsigned_integer)) {}
  void add(const void* /*values*/, std::size_t count) override { count_ += count; }
  void store(std::byte* result) const override { std::memcpy(result, &count_, sizeof count_); }

 private:
  std::uint64_t count_ = 0;
};

}  // namespace

AccumulatorPointer make_accumulator(Aggregate aggregate, Domain domain, const Type& argument,
                                    const std::string& label) {
  switch (aggregate) {
    case Aggregate::minimum:
      return make_minimum(domain, argument, label);
    case Aggregate::maximum:
      return make_maximum(domain, argument, label);
    case Aggregate::sum:
      return make_sum(domain, argument, label);
    case Aggregate::average:
      return make_average(domain);
    case Aggregate::deviation:
      return make_deviation(domain);
    case Aggregate::median:
      return make_median(domain);
    default:
      return std::make_unique<Counter>();
  }
}

}  // namespace kelvo
