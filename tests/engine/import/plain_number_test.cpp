// The fast way of reading numbers against the library's: the same bits, the same end.
#include "import/plain_number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <string>

namespace kelvo {
namespace {

template <typename Number>
void expect_same(const std::string& text) {
  Number fast{};
  Number plain{};
  const char* const end = text.data() + text.size();
  ASSERT_EQ(read_by_library(text.data(), end, &plain), read_plain_number(text.data(), end, &fast))
      << text;
  using Bytes = std::array<unsigned char, sizeof(Number)>;
  ASSERT_EQ(std::bit_cast<Bytes>(plain), std::bit_cast<Bytes>(fast)) << text;
}

void expect_all_same(const std::string& text) {
  expect_same<std::int8_t>(text);
  expect_same<std::uint16_t>(text);
  expect_same<std::int32_t>(text);
  expect_same<std::int64_t>(text);
  expect_same<std::uint64_t>(text);
  expect_same<float>(text);
  expect_same<double>(text);
}

template <typename... Values>
std::string formatted(const char* format, Values... values) {
  char text[512];
  const int length = std::snprintf(text, sizeof text, format, values...);
  return {text, static_cast<std::size_t>(length)};
}

constexpr int rounds = 100'000;

TEST(PlainNumber, NumbersAsTheyAreWritten) {
  static constexpr const char* forms[] = {"%.3f", "%.9g", "%.17g", "%.18e", "%.19g", "%.25g"};
  std::mt19937_64 random(1);
  for (int i = 0; i < rounds; ++i) {
    const int exponent = static_cast<int>(random() % 220) - 160;
    const double size = std::ldexp(static_cast<double>(random() >> 11U), exponent);
    const double value = random() % 2 == 0 ? size : -size;
    for (const char* form : forms) expect_all_same(formatted(form, value));
    expect_all_same(formatted("%.6e", std::bit_cast<double>(random())));
    expect_all_same(formatted("%llu", static_cast<unsigned long long>(random() >> random() % 64)));
  }
}

// Just between two neighbours, and a digit away from there, where rounding twice goes wrong.
TEST(PlainNumber, HalfwayBetweenNeighbours) {
  std::mt19937_64 random(2);
  for (int i = 0; i < rounds; ++i) {
    const auto single =
        std::ldexp(static_cast<float>(random() >> 40U), static_cast<int>(random() % 90) - 50);
    const float above = std::nextafterf(single, INFINITY);
    const double middle = (static_cast<double>(single) + static_cast<double>(above)) / 2;
    for (const int digits : {9, 15, 16, 17, 19, 40})
      expect_all_same(formatted("%.*g", digits, middle));
    const auto whole = static_cast<long double>(random() >> 10U | std::uint64_t{1} << 53U) + 0.5L;
    expect_all_same(formatted("%.*Lf", static_cast<int>(random() % 3), whole));
  }
}

TEST(PlainNumber, DigitsAndExponentsOfAnyNumber) {
  std::mt19937_64 random(3);
  for (int i = 0; i < rounds; ++i) {
    std::string text = random() % 2 == 0 ? "-" : "";
    text += std::to_string(random() >> random() % 64)
                .substr(0, static_cast<std::size_t>(random() % 20));
    if (random() % 2 == 0) text += "." + std::to_string(random() >> random() % 64);
    if (random() % 2 == 0) text += "e" + std::to_string(static_cast<int>(random() % 70) - 35);
    expect_all_same(text);
    expect_all_same(text + ",12345678");
    expect_all_same("00000000000000000000" + text);
  }
}

TEST(PlainNumber, BordersOfTypes) {
  for (const char* text : {"127",
                           "128",
                           "-128",
                           "-129",
                           "65535",
                           "65536",
                           "2147483647",
                           "2147483648",
                           "-2147483648",
                           "-2147483649",
                           "9223372036854775807",
                           "9223372036854775808",
                           "-9223372036854775808",
                           "-9223372036854775809",
                           "18446744073709551615",
                           "18446744073709551616",
                           "3.4028234663852886e38",
                           "3.4028235677973366e38",
                           "3.4028235677973365e38",
                           "1.1754943508222875e-38",
                           "1.1754943508222874e-38",
                           "1e-45",
                           "1e-46",
                           "1e22",
                           "1e23",
                           "1e27",
                           "1e28",
                           "9007199254740993",
                           "9007199254740993e22",
                           "4.9e-324",
                           "1e309",
                           "0",
                           "-0",
                           "-0.0",
                           "0e99999",
                           "0.000000000000000000000000000000"})
    expect_all_same(text);
}

TEST(PlainNumber, WhatIsNoNumberOrOnlyBeginsLikeOne) {
  for (const char* text : {"",
                           "-",
                           "+1",
                           ".",
                           "-.",
                           ".5",
                           "5.",
                           "5.e3",
                           "1e",
                           "1e+",
                           "1e-",
                           "1E5",
                           "1e+05",
                           "1.5.5",
                           "--1",
                           "- 1",
                           " 1",
                           "1 ",
                           "0x10",
                           "1_000",
                           "nan",
                           "-inf",
                           "infinity",
                           "1e12345",
                           "12:34",
                           "1/2",
                           "1234567/",
                           "1234567:",
                           "12345678\xff",
                           "\xb0\xb1\xb2\xb3\xb4\xb5\xb6\xb7"})
    expect_all_same(text);
}

}  // namespace
}  // namespace kelvo
