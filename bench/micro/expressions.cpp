// The evaluator's loops over one batch of a column.
#include <benchmark/benchmark.h>

#include "bench/sample_values.h"
#include "query/arithmetic_kernel.h"
#include "query/compare_kernel.h"

namespace {

using kelvo::Domain;

template <typename Number, Domain domain>
void compare(benchmark::State& state) {
  const std::vector<Number> numbers = bench::sample_numbers<Number>();
  const std::vector<Number> bounds(kelvo::batch_size, Number{1});
  kelvo::Mask mask[kelvo::batch_size];
  const kelvo::CompareKernel kernel =
      kelvo::compare_kernel(kelvo::Comparison::greater, domain, domain);
  for (auto _ : state) {
    kernel(numbers.data(), bounds.data(), kelvo::batch_size, mask);
    benchmark::DoNotOptimize(kelvo::count_true(mask, kelvo::batch_size));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kelvo::batch_size));
}

template <typename Number, Domain domain>
void add(benchmark::State& state) {
  const std::vector<Number> numbers = bench::sample_numbers<Number>();
  const std::vector<Number> ones(kelvo::batch_size, Number{1});
  const std::vector<kelvo::Mask> active(kelvo::batch_size, 1);
  std::vector<Number> sums(kelvo::batch_size);
  const kelvo::ArithmeticKernel kernel =
      kelvo::arithmetic_kernel(kelvo::Arithmetic::add, domain, domain);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        kernel(numbers.data(), ones.data(), kelvo::batch_size, active.data(), sums.data()));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kelvo::batch_size));
}

}  // namespace

BENCHMARK(compare<double, Domain::real>);
BENCHMARK(compare<std::int64_t, Domain::signed_integer>);
BENCHMARK(add<double, Domain::real>);
BENCHMARK(add<std::int64_t, Domain::signed_integer>);
