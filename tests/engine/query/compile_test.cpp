// Conditions over values in memory: exact comparisons, and what absent and unlike values do.
#include "query/compile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "error.h"
#include "language/parser.h"

namespace kelvo {
namespace {

struct Value {
  Type type;
  std::vector<std::byte> bytes;
};

template <typename Number>
Value number(Number value, Kind kind = Kind::integer) {
  Value one;
  one.type.kind = kind;
  one.type.size = one.type.file_size = sizeof value;
  one.type.is_signed = std::numeric_limits<Number>::is_signed;
  one.bytes.resize(sizeof value);
  std::memcpy(one.bytes.data(), &value, sizeof value);
  return one;
}

Value text(const std::string& value) {
  Value one;
  one.type.kind = Kind::text;
  one.type.size = one.type.file_size = value.size();
  one.bytes.resize(value.size());
  std::memcpy(one.bytes.data(), value.data(), value.size());
  return one;
}

class Fulfilled : public testing::Test {
 protected:
  bool holds(const std::string& written) {
    Parser parser(written);
    const Expression condition = parse_condition(parser, NameForm::attribute);
    return is_fulfilled(condition, [this](const std::string& name) -> std::optional<NamedValue> {
      const auto found = values.find(name);
      if (found == values.end()) return std::nullopt;
      return NamedValue{&found->second.type, found->second.bytes.data()};
    });
  }

  std::map<std::string, Value> values;
};

TEST_F(Fulfilled, IntegersCompareOverTheFullRange) {
  values["s"] = number(std::int64_t{-1});
  values["u"] = number(std::numeric_limits<std::uint64_t>::max());
  EXPECT_TRUE(holds("@s < @u"));
  EXPECT_FALSE(holds("@s = @u"));
  EXPECT_TRUE(holds("@u = 18446744073709551615"));
  EXPECT_FALSE(holds("@u = -1"));
  EXPECT_TRUE(holds("@u > 18446744073709551614"));
}

TEST_F(Fulfilled, IntegersCompareExactlyWithFractions) {
  values["i"] = number(std::int64_t{9007199254740993});  // 2^53 + 1, which no double holds
  EXPECT_TRUE(holds("@i > 9007199254740992.0"));
  EXPECT_FALSE(holds("@i = 9007199254740992.0"));
  EXPECT_TRUE(holds("@i > 9007199254740992.5e0"));
  EXPECT_TRUE(holds("@i <> 1.5"));
  EXPECT_TRUE(holds("@i < INF AND @i > -INF"));
  EXPECT_FALSE(holds("@i < NAN OR @i >= NAN"));
}

TEST_F(Fulfilled, RealsCompareExactlyWithIntegers) {
  values["x"] = number(9007199254740992.0, Kind::real);
  EXPECT_FALSE(holds("@x = 9007199254740993"));
  EXPECT_TRUE(holds("@x < 9007199254740993"));
  EXPECT_TRUE(holds("@x = 9007199254740992"));
}

TEST_F(Fulfilled, AFractionIsRoundedToTheTypeOfTheValue) {
  values["f"] = number(0.1F, Kind::real);
  values["d"] = number(0.1, Kind::real);
  EXPECT_TRUE(holds("@f = 0.1"));
  EXPECT_TRUE(holds("@f IN (0.5, 0.1)"));
  EXPECT_FALSE(holds("@f > 0.1"));
  EXPECT_FALSE(holds("@f = @d"));
  EXPECT_TRUE(holds("@f < 1e300"));
}

TEST_F(Fulfilled, TextComparesByBytes) {
  values["t"] = text("K\xc3\xa9");
  EXPECT_TRUE(holds("@t > 'Kz'"));
  EXPECT_TRUE(holds("@t LIKE 'K_'"));
  EXPECT_TRUE(holds("@t IN ('a', 'K\xc3\xa9')"));
  EXPECT_FALSE(holds("@t = 'k\xc3\xa9'"));
}

TEST_F(Fulfilled, AbsentValuesMakeComparisonsFalse) {
  EXPECT_FALSE(holds("@none = 1"));
  EXPECT_FALSE(holds("@none <> 1"));
  EXPECT_FALSE(holds("@none NOT IN (1)"));
  EXPECT_FALSE(holds("@none IS NOT NAN"));
  EXPECT_FALSE(holds("@none + 1 > 0"));
  EXPECT_FALSE(holds("@none"));
  EXPECT_TRUE(holds("NOT @none = 1"));
}

TEST_F(Fulfilled, UnlikeValuesMakeComparisonsFalse) {
  values["t"] = text("5");
  EXPECT_FALSE(holds("@t > 1"));
  EXPECT_TRUE(holds("@t > 1 OR @t = '5'"));
}

TEST_F(Fulfilled, IntegerArithmeticTruncatesAndIsExact) {
  values["i"] = number(std::int32_t{-7});
  values["u"] = number(std::numeric_limits<std::uint64_t>::max());
  EXPECT_TRUE(holds("@i / 2 = -3 AND @i % 2 = -1"));
  EXPECT_TRUE(holds("@i / 2.0 = -3.5"));
  EXPECT_TRUE(holds("@u / 2 = 9223372036854775807 AND @u % 10 = 5"));
  EXPECT_THROW(holds("@u + 1 > 0"), StatementError);
  EXPECT_THROW(holds("9223372036854775807 + @i * -1 > 0"), StatementError);
  EXPECT_THROW(holds("-9223372036854775808 / (@i + 6) > 0"), StatementError);
}

TEST_F(Fulfilled, WhatAndOrLeaveOutIsNotCalculated) {
  values["n"] = number(std::int32_t{0});
  EXPECT_FALSE(holds("@n <> 0 AND 1 / @n > 0"));
  EXPECT_TRUE(holds("@n = 0 OR 1 / @n > 0"));
  EXPECT_THROW(holds("1 / @n > 0"), StatementError);
}

}  // namespace
}  // namespace kelvo
