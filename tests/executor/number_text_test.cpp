// Numbers as text must be libc's printf byte for byte: borders, ties and a stream of pseudo-random
// values with a fixed seed.
#include "executor/number_text.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

template <typename Number>
std::string written(Number value) {
  std::array<char, number_text_room> text;
  return {text.data(), static_cast<std::size_t>(write_number(text.data(), value) - text.data())};
}

std::string printed(std::int32_t value) { return std::to_string(value); }
std::string printed(std::uint32_t value) { return std::to_string(value); }
std::string printed(std::int64_t value) { return std::to_string(value); }
std::string printed(std::uint64_t value) { return std::to_string(value); }

std::string printed(double value) {
  std::array<char, 512> text;
  const int length = std::snprintf(text.data(), text.size(), "%f", value);
  return {text.data(), static_cast<std::size_t>(length)};
}

template <typename Number>
void expect_as_printed(Number value) {
  ASSERT_EQ(printed(value), written(value));
}

// The value, its neighbours among the doubles, and all of them negated.
void expect_around(double value) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double one :
       {value, std::nextafter(value, infinity), std::nextafter(value, -infinity)}) {
    expect_as_printed(one);
    expect_as_printed(-one);
  }
}

// Every power of ten and of two with its neighbours: where the number of digits changes.
template <typename Number>
void expect_at_borders() {
  std::vector<Number> borders = {0, std::numeric_limits<Number>::min(),
                                 std::numeric_limits<Number>::max()};
  for (Number power = 1; power <= std::numeric_limits<Number>::max() / 10;
       power = static_cast<Number>(power * 10)) {
    borders.push_back(static_cast<Number>(power * 10));
  }
  for (Number power = 1; power <= std::numeric_limits<Number>::max() / 2;
       power = static_cast<Number>(power * 2)) {
    borders.push_back(static_cast<Number>(power * 2));
  }
  for (const Number border : borders) {
    expect_as_printed(border);
    expect_as_printed(
        static_cast<Number>(border - (border > std::numeric_limits<Number>::min() ? 1 : 0)));
    expect_as_printed(
        static_cast<Number>(border + (border < std::numeric_limits<Number>::max() ? 1 : 0)));
  }
}

}  // namespace

TEST(NumberText, IntegersAtBorders) {
  expect_at_borders<std::int32_t>();
  expect_at_borders<std::uint32_t>();
  expect_at_borders<std::int64_t>();
  expect_at_borders<std::uint64_t>();
}

TEST(NumberText, RandomIntegersOfAllLengths) {
  std::mt19937_64 random(20261);
  for (int i = 0; i < 300'000; ++i) {
    const std::uint64_t bits = random() >> (random() % 64);
    expect_as_printed(bits);
    expect_as_printed(static_cast<std::uint32_t>(bits));
    expect_as_printed(static_cast<std::int64_t>(bits));
    expect_as_printed(static_cast<std::int64_t>(0 - bits));
    expect_as_printed(static_cast<std::int32_t>(bits));
  }
}

TEST(NumberText, DoublesAtBorders) {
  for (int exponent = -1074; exponent < 1024; ++exponent) expect_around(std::ldexp(1.0, exponent));
  for (int exponent = -320; exponent < 309; ++exponent) expect_around(std::pow(10.0, exponent));
  for (const double value : {0.0, 4294967294.0, 4294967294.5, 4294967295.0, 4294967295.5,
                             std::numeric_limits<double>::max()}) {
    expect_around(value);
  }
}

TEST(NumberText, InfinitiesAndNan) {
  for (const double value :
       {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    expect_as_printed(value);
    expect_as_printed(std::copysign(value, -1.0));
  }
}

// The seventh digit is a 5 and nothing follows it, exactly or as near as a double can be.
TEST(NumberText, TiesAndTheirNeighbours) {
  std::mt19937_64 random(20262);
  for (int i = 0; i < 200'000; ++i) {
    expect_around((static_cast<double>(random() >> (12 + random() % 52)) + 0.5) / 1e6);
    expect_around(static_cast<double>(random() >> 20) /
                  std::ldexp(1.0, static_cast<int>(random() % 44)));
  }
}

TEST(NumberText, RandomDoublesOfAllExponents) {
  std::mt19937_64 random(20263);
  for (int i = 0; i < 200'000; ++i) expect_as_printed(std::bit_cast<double>(random()));
}

TEST(NumberText, RandomDoublesOfEverydaySize) {
  std::mt19937_64 random(20264);
  for (int i = 0; i < 500'000; ++i) {
    const auto mantissa = static_cast<double>(static_cast<std::int64_t>(random()));
    expect_as_printed(std::ldexp(mantissa, -static_cast<int>(random() % 100)));
  }
}
