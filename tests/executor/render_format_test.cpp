// Formats of numbers against libc's own, over boundary and random values.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "executor/render_fixture.h"

namespace {

using scripted::Element;

template <typename Number>
std::string formatted(const char* format, Number value) {
  char text[512];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

constexpr int random_values = 2000;

template <typename Integer>
std::vector<Element> integers() {
  using Limits = std::numeric_limits<Integer>;
  std::vector<Element> values = {Limits::min(), Limits::max(), Integer{0}, Integer{1},
                                 static_cast<Integer>(-1)};
  for (Integer power = 1; power > 0 && power < Limits::max() / 2;
       power = static_cast<Integer>(power * 2)) {
    values.insert(values.end(), {power, static_cast<Integer>(power - 1)});
  }
  std::mt19937_64 random(20);
  for (int i = 0; i < random_values; ++i) {
    values.emplace_back(static_cast<Integer>(random()));
  }
  return values;
}

template <typename Real>
std::vector<Element> reals() {
  using Limits = std::numeric_limits<Real>;
  std::vector<Element> values = {Real{0},
                                 -Real{0},
                                 Limits::min(),
                                 Limits::max(),
                                 Limits::lowest(),
                                 Limits::denorm_min(),
                                 Limits::epsilon(),
                                 Limits::infinity(),
                                 -Limits::infinity(),
                                 Limits::quiet_NaN(),
                                 -Limits::quiet_NaN(),
                                 Real(0.5e-6),
                                 Real(1.5e-6),
                                 Real(2.5e-6),
                                 Real(999999.9999995)};
  std::mt19937_64 random(21);
  std::uniform_real_distribution<double> exponent(Limits::min_exponent10, Limits::max_exponent10);
  for (int i = 0; i < random_values; ++i) {
    const double magnitude = std::pow(10, exponent(random));
    values.emplace_back(static_cast<Real>(random() % 2 == 0 ? magnitude : -magnitude));
  }
  return values;
}

class FormatTest : public RenderTest {
 protected:
  /// Each value as a scalar row and all of them as one list must read as libc formats them.
  template <typename Number, typename Promoted>
  void compare(std::int32_t scalar, std::int32_t list, const char* format,
               const std::vector<Element>& values) {
    std::vector<std::string> texts;
    for (const Element& value : values) {
      result().row(scalar, {value});
      texts.push_back(formatted(format, static_cast<Promoted>(value.as<Number>())));
    }
    result().row(list, values);
    std::istringstream display(shown());
    std::string text;
    for (const std::string& expected : texts) {
      std::getline(display, text);
      ASSERT_EQ(expected, text) << "in a row";
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
      std::getline(display, text, i + 1 < texts.size() ? ' ' : '\n');
      ASSERT_EQ(texts[i], text) << "in a list";
    }
    EXPECT_EQ(std::char_traits<char>::eof(), display.get());
  }
};

TEST_F(FormatTest, Tinyint) {
  compare<std::int8_t, int>(KELVO_TINYINT, KELVO_VARTINYINT, "%d", integers<std::int8_t>());
}

TEST_F(FormatTest, UnsignedTinyint) {
  compare<std::uint8_t, unsigned>(KELVO_UNSIGNED_TINYINT, KELVO_UNSIGNED_VARTINYINT, "%u",
                                  integers<std::uint8_t>());
}

TEST_F(FormatTest, Opaque) {
  compare<std::uint8_t, unsigned>(KELVO_UNSIGNED_TINYINT, KELVO_OPAQUE, "%u",
                                  integers<std::uint8_t>());
}

TEST_F(FormatTest, Smallint) {
  compare<std::int16_t, int>(KELVO_SMALLINT, KELVO_VARSMALLINT, "%d", integers<std::int16_t>());
}

TEST_F(FormatTest, UnsignedSmallint) {
  compare<std::uint16_t, unsigned>(KELVO_UNSIGNED_SMALLINT, KELVO_UNSIGNED_VARSMALLINT, "%u",
                                   integers<std::uint16_t>());
}

TEST_F(FormatTest, Int) {
  compare<std::int32_t, int>(KELVO_INT, KELVO_VARINT, "%d", integers<std::int32_t>());
}

TEST_F(FormatTest, UnsignedInt) {
  compare<std::uint32_t, unsigned>(KELVO_UNSIGNED_INT, KELVO_UNSIGNED_VARINT, "%u",
                                   integers<std::uint32_t>());
}

TEST_F(FormatTest, Bigint) {
  compare<std::int64_t, long long>(KELVO_BIGINT, KELVO_VARBIGINT, "%lld", integers<std::int64_t>());
}

TEST_F(FormatTest, UnsignedBigint) {
  compare<std::uint64_t, unsigned long long>(KELVO_UNSIGNED_BIGINT, KELVO_UNSIGNED_VARBIGINT,
                                             "%llu", integers<std::uint64_t>());
}

TEST_F(FormatTest, Float) {
  compare<float, double>(KELVO_FLOAT, KELVO_VARFLOAT, "%f", reals<float>());
}

TEST_F(FormatTest, Double) {
  compare<double, double>(KELVO_DOUBLE, KELVO_VARDOUBLE, "%f", reals<double>());
}

}  // namespace
