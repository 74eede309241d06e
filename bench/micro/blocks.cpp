// Walking a result: what a row or an element costs between the source's blocks and the interface's
// getters.
#include <benchmark/benchmark.h>

#include <cstring>

#include "answers/result.h"
#include "bench/sample_values.h"
#include "kelvo.h"

namespace {

// One block of numbers, given a number of times.
class RepeatedBlock : public kelvo::RowSource {
 public:
  RepeatedBlock(kelvo::RowShape shape, std::size_t times) : times_(times) {
    const std::vector<std::int32_t> numbers = bench::sample_numbers<std::int32_t>();
    const bool line = shape == kelvo::RowShape::line;
    block_.restart(line ? KELVO_VARINT : KELVO_INT, shape, sizeof(std::int32_t));
    block_.values.resize(numbers.size() * sizeof(std::int32_t));
    std::memcpy(block_.values.data(), numbers.data(), block_.values.size());
    if (line) block_.line_length = 16;
  }

  bool next(kelvo::Block& block) override {
    if (times_ == 0) return false;
    --times_;
    block = block_;
    return true;
  }

 private:
  kelvo::Block block_;
  std::size_t times_;
};

constexpr std::size_t blocks = 16;

// As the operations of kelvo.h go: the cursor steps by itself where it can.
bool go_to_row(kelvo::Cursor& cursor, kelvo::Result& result) {
  return cursor.step_to_row() || result.next_row();
}
bool go_to_element(kelvo::Cursor& cursor, kelvo::Result& result) {
  return cursor.step_to_element() || result.next_element();
}

void count_values(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(blocks * bench::sample_size));
}

void walk_rows(benchmark::State& state) {
  for (auto _ : state) {
    kelvo::Cursor cursor;
    kelvo::Result result(cursor);
    result.start(std::make_unique<RepeatedBlock>(kelvo::RowShape::scalar, blocks));
    while (go_to_row(cursor, result)) benchmark::DoNotOptimize(cursor.value);
  }
  count_values(state);
}

void walk_lines(benchmark::State& state) {
  for (auto _ : state) {
    kelvo::Cursor cursor;
    kelvo::Result result(cursor);
    result.start(std::make_unique<RepeatedBlock>(kelvo::RowShape::line, blocks));
    while (go_to_row(cursor, result))
      while (go_to_element(cursor, result)) benchmark::DoNotOptimize(cursor.value);
  }
  count_values(state);
}

}  // namespace

BENCHMARK(walk_rows);
BENCHMARK(walk_lines);
