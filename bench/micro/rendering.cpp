// Numbers into text, by type, each beside the libraries' way.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>

#include "bench/sample_values.h"
#include "executor/number_text.h"
#include "executor/short_text.h"
#include "values/shortest.h"

namespace {

template <typename Number>
void write_numbers(benchmark::State& state) {
  const std::vector<Number> numbers = bench::sample_numbers<Number>();
  char text[number_text_room];
  for (auto _ : state) {
    for (const Number number : numbers) benchmark::DoNotOptimize(write_number(text, number));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numbers.size()));
}

void print_with_libc(benchmark::State& state) {
  const std::vector<double> numbers = bench::sample_numbers<double>();
  char text[number_text_room];
  for (auto _ : state) {
    for (const double number : numbers)
      benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%f", number));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numbers.size()));
}

void write_shortest_decimals(benchmark::State& state) {
  const std::vector<double> numbers = bench::sample_numbers<double>();
  char text[kelvo::shortest_room];
  for (auto _ : state) {
    for (const double number : numbers)
      benchmark::DoNotOptimize(kelvo::write_shortest(number, text));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numbers.size()));
}

void write_shortest_with_library(benchmark::State& state) {
  const std::vector<double> numbers = bench::sample_numbers<double>();
  char text[kelvo::shortest_room];
  for (auto _ : state) {
    for (const double number : numbers)
      benchmark::DoNotOptimize(std::to_chars(text, text + sizeof text, number));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numbers.size()));
}

void copy_texts(benchmark::State& state) {
  const std::vector<std::string> texts = bench::sample_texts();
  char to[short_text_room];
  for (auto _ : state) {
    for (const std::string& text : texts)
      benchmark::DoNotOptimize(copy_short_text(text.c_str(), to));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts.size()));
}

}  // namespace

BENCHMARK(write_numbers<std::int32_t>);
BENCHMARK(write_numbers<std::uint32_t>);
BENCHMARK(write_numbers<std::int64_t>);
BENCHMARK(write_numbers<std::uint64_t>);
BENCHMARK(write_numbers<double>);
BENCHMARK(print_with_libc);
BENCHMARK(write_shortest_decimals);
BENCHMARK(write_shortest_with_library);
BENCHMARK(copy_texts);
