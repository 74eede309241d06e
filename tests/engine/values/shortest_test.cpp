// The shortest decimals of reals, beside those of the standard library.
#include "values/shortest.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>

namespace kelvo {
namespace {

constexpr int random_values = 300'000;

template <typename Real>
std::string written(Real value) {
  std::array<char, shortest_room> text;
  return {text.data(), write_shortest(value, text.data())};
}

template <typename Real>
void expect_as_library(Real value) {
  std::array<char, shortest_room> text;
  const char* end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  ASSERT_EQ(std::string_view(text.data(), end), written(value));
}

template <typename Real>
void expect_neighbours_as_library(Real value) {
  expect_as_library(value);
  expect_as_library(std::nextafter(value, Real{0}));
  expect_as_library(std::nextafter(value, std::numeric_limits<Real>::infinity()));
}

TEST(Shortest, WritesTheShorterNotation) {
  EXPECT_EQ("0.1", written(0.1));
  EXPECT_EQ("-1.5", written(-1.5));
  EXPECT_EQ("0.001", written(0.001));
  EXPECT_EQ("1e-04", written(0.0001));
  EXPECT_EQ("0.00012", written(0.00012));
  EXPECT_EQ("10000", written(10000.0));
  EXPECT_EQ("1e+05", written(100000.0));
  EXPECT_EQ("1.7976931348623157e+308", written(std::numeric_limits<double>::max()));
  EXPECT_EQ("5e-324", written(std::numeric_limits<double>::denorm_min()));
  EXPECT_EQ("3.4028235e+38", written(std::numeric_limits<float>::max()));
}

TEST(Shortest, WritesZerosAndWhatIsNoNumber) {
  EXPECT_EQ("0", written(0.0));
  EXPECT_EQ("-0", written(-0.0F));
  EXPECT_EQ("-inf", written(-std::numeric_limits<double>::infinity()));
  EXPECT_EQ("nan", written(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ("nan", written(-std::numeric_limits<float>::quiet_NaN()));
}

TEST(Shortest, WritesRandomBitsAsTheLibraryDoes) {
  std::mt19937_64 random(1);
  for (int i = 0; i < random_values; ++i) {
    const std::uint64_t bits = random();
    const auto real = std::bit_cast<double>(bits);
    const auto single = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    if (!std::isnan(real)) expect_as_library(real);
    if (!std::isnan(single)) expect_as_library(single);
  }
}

TEST(Shortest, WritesSmallestNumbersAsTheLibraryDoes) {
  std::mt19937_64 random(2);
  for (int i = 0; i < random_values; ++i) {
    const std::uint64_t bits = random() >> (12 + i % 52);
    expect_as_library(std::bit_cast<double>(bits));
    expect_as_library(std::bit_cast<float>(static_cast<std::uint32_t>(bits) >> 9));
  }
}

// The neighbour below is nearer there than the one above.
TEST(Shortest, WritesNeighboursOfPowersOfTwoAsTheLibraryDoes) {
  for (int exponent = -1074; exponent < 1024; ++exponent)
    expect_neighbours_as_library(std::ldexp(1.0, exponent));
  for (int exponent = -149; exponent < 128; ++exponent)
    expect_neighbours_as_library(std::ldexp(1.0F, exponent));
}

TEST(Shortest, WritesNeighboursOfShortDecimalsAsTheLibraryDoes) {
  for (int exponent = -323; exponent < 309; ++exponent) {
    for (const int digits : {1, 2, 5, 7, 9, 15, 99, 123, 500, 999, 12345}) {
      const std::string text = std::to_string(digits) + "e" + std::to_string(exponent - 4);
      expect_neighbours_as_library(std::strtod(text.c_str(), nullptr));
      expect_neighbours_as_library(std::strtof(text.c_str(), nullptr));
    }
  }
}

// Of any size, up to those that are no longer exact, and with few places behind the point.
TEST(Shortest, WritesWholeAndFixedPointNumbersAsTheLibraryDoes) {
  std::mt19937_64 random(3);
  for (int i = 0; i < random_values; ++i) {
    const auto whole = static_cast<double>(random() >> i % 64);
    expect_as_library(whole);
    expect_as_library(static_cast<float>(whole));
    expect_as_library(whole / 8);
    expect_as_library(whole / 1000);
    expect_as_library(static_cast<float>(whole / 1000));
  }
}

}  // namespace
}  // namespace kelvo
