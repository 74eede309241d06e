// Aggregates over columns of numbers, in one pass (the median in a few), in memory that does not
// grow.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "language/query.h"
#include "query/column.h"
#include "values/type.h"

namespace kelvo {

class Accumulator {
 public:
  explicit Accumulator(Type type) : type_(std::move(type)) {}
  Accumulator(const Accumulator&) = delete;
  Accumulator& operator=(const Accumulator&) = delete;
  virtual ~Accumulator() = default;

  /// What the result is.
  [[nodiscard]] const Type& type() const noexcept { return type_; }

  /// Takes values of the domain that it was made for; for a count, only their number.
  virtual void add(const void* values, std::size_t count) = 0;

  /// All values have been given. True where they are needed once more, from the first one on.
  virtual bool end_pass() { return false; }

  /// Writes the result, laid out as type() says. Throws StatementError where there is none:
  /// out_of_range for a sum that no BIGINT holds, and for the least of nothing.
  virtual void store(std::byte* result) const = 0;

 private:
  Type type_;
};

using AccumulatorPointer = std::unique_ptr<Accumulator>;

/// `domain` is that of the values that will be added: one of numbers, but for a count, where it
/// does not matter; `argument` is their type in the file, `label` what messages call the aggregate.
AccumulatorPointer make_accumulator(Aggregate aggregate, Domain domain, const Type& argument,
                                    const std::string& label);

// What it chooses from, each in a file of its own.
AccumulatorPointer make_minimum(Domain domain, const Type& argument, const std::string& label);
AccumulatorPointer make_maximum(Domain domain, const Type& argument, const std::string& label);
AccumulatorPointer make_sum(Domain domain, const Type& argument, const std::string& label);
AccumulatorPointer make_average(Domain domain);
AccumulatorPointer make_deviation(Domain domain);
/// Needs the values up to four times (twice as a rule).
AccumulatorPointer make_median(Domain domain);

}  // namespace kelvo
