// The display of results: every type's format and getters, element lists whose count lies, strings,
// and the places where the interrupt flag is looked at.
#include "executor/render.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "executor/interrupt.h"
#include "support/capture.h"
#include "support/scripted_engine.h"

namespace {

using scripted::Calls;
using scripted::Element;
using scripted::engine;

const std::string bold_interrupted = "\x1b[1m(Interrupted by the user)\x1b[0m\n";
const std::string unexpected_type =
    "Error when showing result of the operation as the data type is unexpected.\n";

void raise_flag() { interrupt_status = 1; }

class RenderTest : public testing::Test {
 protected:
  RenderTest() { interrupt_status = 0; }
  ~RenderTest() override { interrupt_status = 0; }

  scripted::Answer& result() { return result_; }

  /// What the display of the scripted result writes; its outcome is kept.
  std::string shown() {
    kelvo_execute("query");
    return capture_stdout([this] { outcome_ = render_result(); });
  }

  RenderOutcome outcome() const { return outcome_; }

  /// The calls that the display made, shorn of the cursor, which must be null in each.
  static Calls display_calls() {
    Calls operations;
    for (const std::string& call : engine().calls()) {
      const std::size_t argument = call.find("(null)");
      if (call != "kelvo_execute(query)") {
        operations.push_back(argument == std::string::npos ? "not null: " + call
                                                           : call.substr(0, argument));
      }
    }
    return operations;
  }

 private:
  static scripted::Answer& fresh_answer() {
    engine().reset();
    return engine().answers("query");
  }

  scripted::Answer& result_ = fresh_answer();
  RenderOutcome outcome_ = render_finished;
};

// --- The walk ---

TEST_F(RenderTest, EmptyResultPrintsNothingAndAsksForNoType) {
  EXPECT_EQ("", shown());
  EXPECT_EQ(render_finished, outcome());
  EXPECT_EQ(Calls{"kelvo_cursor_next"}, display_calls());
}

TEST_F(RenderTest, AnyNonZeroResultEndsTheRows) {
  for (const int end : {1, 2, -1, std::numeric_limits<int>::min()}) {
    result().rows.clear();
    result().row(KELVO_INT, {7}).ending_with(end);
    EXPECT_EQ("7\n", shown()) << end;
    EXPECT_EQ(render_finished, outcome()) << end;
  }
}

TEST_F(RenderTest, AnyNonZeroResultEndsTheElements) {
  for (const int end : {1, 2, -1, std::numeric_limits<int>::max()}) {
    result().rows.clear();
    result().row(KELVO_VARINT, {7, 8}).characters(KELVO_CHAR, "ab").ending_with(end);
    EXPECT_EQ("7 8\nab\n", shown()) << end;
  }
}

TEST_F(RenderTest, TypeIsAskedAfreshForEveryRow) {
  result().row(KELVO_INT, {-1}).text(KELVO_VARCHAR, "two").row(KELVO_VARDOUBLE, {3, 4});
  EXPECT_EQ("-1\ntwo\n3.000000 4.000000\n", shown());
  EXPECT_EQ((Calls{"kelvo_cursor_next", "kelvo_cursor_get_data_type", "kelvo_cursor_get_int",
                   "kelvo_cursor_next", "kelvo_cursor_get_data_type", "kelvo_cursor_get_char",
                   "kelvo_cursor_next", "kelvo_cursor_get_data_type", "kelvo_subcursor_get_count",
                   "kelvo_subcursor_next", "kelvo_subcursor_get_double",  //
                   "kelvo_subcursor_next", "kelvo_subcursor_get_double",  //
                   "kelvo_subcursor_next", "kelvo_cursor_next"}),
            display_calls());
}

TEST_F(RenderTest, WhatTheEnginePrintsItselfComesInOrder) {
  const auto print = [] { std::fputs("<debug>", stdout); };
  result().row(KELVO_INT, {1}).row(KELVO_VARINT, {2, 3}).characters(KELVO_CHAR, "ab");
  result().text(KELVO_VARCHAR, "text");
  result()
      .on("kelvo_cursor_next", 2, print)
      .on("kelvo_subcursor_next", 2, print)
      .on("kelvo_subcursor_get_unsigned_tinyint", 2, print)
      .on("kelvo_cursor_get_char", 1, print)
      .on("kelvo_cursor_next", 5, print);
  EXPECT_EQ("1\n<debug>2 <debug>3\na<debug>b\n<debug>text\n<debug>", shown());
}

// --- Calls and formats of each type ---

struct TypeCase {
  std::int32_t code;
  const char* getter;
};

class ScalarTypeTest : public RenderTest, public testing::WithParamInterface<TypeCase> {};

TEST_P(ScalarTypeTest, IsReadWithOneGetter) {
  result().row(GetParam().code, {1});
  shown();
  EXPECT_EQ((Calls{"kelvo_cursor_next", "kelvo_cursor_get_data_type", GetParam().getter,
                   "kelvo_cursor_next"}),
            display_calls());
}

TEST_P(ScalarTypeTest, StopsAfterTheRowWhenTheFlagIsUp) {
  result().row(GetParam().code, {1}).row(GetParam().code, {2});
  result().on(GetParam().getter, 1, raise_flag);
  const bool real = GetParam().code == KELVO_FLOAT || GetParam().code == KELVO_DOUBLE;
  EXPECT_EQ((real ? "1.000000\n" : "1\n") + bold_interrupted, shown());
  EXPECT_EQ(render_interrupted, outcome());
}

constexpr TypeCase scalar_types[] = {
    {KELVO_TINYINT, "kelvo_cursor_get_tinyint"},
    {KELVO_UNSIGNED_TINYINT, "kelvo_cursor_get_unsigned_tinyint"},
    {KELVO_SMALLINT, "kelvo_cursor_get_smallint"},
    {KELVO_UNSIGNED_SMALLINT, "kelvo_cursor_get_unsigned_smallint"},
    {KELVO_INT, "kelvo_cursor_get_int"},
    {KELVO_UNSIGNED_INT, "kelvo_cursor_get_unsigned_int"},
    {KELVO_BIGINT, "kelvo_cursor_get_bigint"},
    {KELVO_UNSIGNED_BIGINT, "kelvo_cursor_get_unsigned_bigint"},
    {KELVO_FLOAT, "kelvo_cursor_get_float"},
    {KELVO_DOUBLE, "kelvo_cursor_get_double"},
};
INSTANTIATE_TEST_SUITE_P(Types, ScalarTypeTest, testing::ValuesIn(scalar_types),
                         [](const auto& type) { return std::string(type.param.getter); });

class ListTypeTest : public RenderTest, public testing::WithParamInterface<TypeCase> {
 protected:
  std::string number(int value) const {
    const bool real = GetParam().code == KELVO_VARFLOAT || GetParam().code == KELVO_VARDOUBLE;
    return std::to_string(value) + (real ? ".000000" : "");
  }
};

TEST_P(ListTypeTest, IsReadWithCountThenElementByElement) {
  result().row(GetParam().code, {1, 2});
  EXPECT_EQ(number(1) + " " + number(2) + "\n", shown());
  EXPECT_EQ((Calls{"kelvo_cursor_next", "kelvo_cursor_get_data_type", "kelvo_subcursor_get_count",
                   "kelvo_subcursor_next", GetParam().getter, "kelvo_subcursor_next",
                   GetParam().getter, "kelvo_subcursor_next", "kelvo_cursor_next"}),
            display_calls());
}

TEST_P(ListTypeTest, WithoutElementsIsAnEmptyLine) {
  result().row(GetParam().code, {});
  EXPECT_EQ("\n", shown());
  EXPECT_EQ((Calls{"kelvo_cursor_next", "kelvo_cursor_get_data_type", "kelvo_subcursor_get_count",
                   "kelvo_subcursor_next", "kelvo_cursor_next"}),
            display_calls());
}

TEST_P(ListTypeTest, StopsAfterAnInnerElementWhenTheFlagIsUp) {
  result().row(GetParam().code, {1, 2, 3}).on(GetParam().getter, 2, raise_flag);
  EXPECT_EQ(number(1) + " " + number(2) + " \n" + bold_interrupted, shown());
  EXPECT_EQ(render_interrupted, outcome());
}

constexpr TypeCase list_types[] = {
    {KELVO_VARTINYINT, "kelvo_subcursor_get_tinyint"},
    {KELVO_UNSIGNED_VARTINYINT, "kelvo_subcursor_get_unsigned_tinyint"},
    {KELVO_VARSMALLINT, "kelvo_subcursor_get_smallint"},
    {KELVO_UNSIGNED_VARSMALLINT, "kelvo_subcursor_get_unsigned_smallint"},
    {KELVO_VARINT, "kelvo_subcursor_get_int"},
    {KELVO_UNSIGNED_VARINT, "kelvo_subcursor_get_unsigned_int"},
    {KELVO_VARBIGINT, "kelvo_subcursor_get_bigint"},
    {KELVO_UNSIGNED_VARBIGINT, "kelvo_subcursor_get_unsigned_bigint"},
    {KELVO_VARFLOAT, "kelvo_subcursor_get_float"},
    {KELVO_VARDOUBLE, "kelvo_subcursor_get_double"},
    {KELVO_OPAQUE, "kelvo_subcursor_get_unsigned_tinyint"},
};
INSTANTIATE_TEST_SUITE_P(Types, ListTypeTest, testing::ValuesIn(list_types),
                         [](const auto& type) { return "code" + std::to_string(type.param.code); });

TEST_F(RenderTest, TinyintOfMinusOnePrintsWithItsSign) {
  result().row(KELVO_TINYINT, {-1});
  EXPECT_EQ("-1\n", shown());
}

TEST_F(RenderTest, UnsignedTinyintOf255PrintsAsANumber) {
  result().row(KELVO_UNSIGNED_TINYINT, {255});
  EXPECT_EQ("255\n", shown());
}

TEST_F(RenderTest, LargestUnsignedIntPrintsWithoutASign) {
  result().row(KELVO_UNSIGNED_INT, {4294967295U});
  EXPECT_EQ("4294967295\n", shown());
}

TEST_F(RenderTest, SmallestBigintPrintsInFull) {
  result().row(KELVO_BIGINT, {std::numeric_limits<std::int64_t>::min()});
  EXPECT_EQ("-9223372036854775808\n", shown());
}

TEST_F(RenderTest, DoubleOfTwoPrintsWithSixDigits) {
  result().row(KELVO_DOUBLE, {2});
  EXPECT_EQ("2.000000\n", shown());
}

TEST_F(RenderTest, FloatsPrintInFixedNotation) {
  result().row(KELVO_FLOAT, {1.5}).row(KELVO_FLOAT, {0.1F}).row(KELVO_DOUBLE, {1e20});
  EXPECT_EQ("1.500000\n0.100000\n100000000000000000000.000000\n", shown());
}

TEST_F(RenderTest, VarfloatRowIsOneLineWithSingleBlanks) {
  result().row(KELVO_VARFLOAT, {0.5, 1});
  EXPECT_EQ("0.500000 1.000000\n", shown());
}

TEST_F(RenderTest, OpaquePrintsItsBytesAsUnsignedNumbers) {
  result().row(KELVO_OPAQUE, {0, 127, 128, 255});
  EXPECT_EQ("0 127 128 255\n", shown());
}

// --- Formats against libc's own, over boundary and random values ---

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

// --- Element lists ---

TEST_F(RenderTest, ListOfOneElementPrintsItAlone) {
  result().row(KELVO_VARINT, {-5});
  EXPECT_EQ("-5\n", shown());
}

TEST_F(RenderTest, ListOfThreeElementsIsSeparatedBySingleBlanks) {
  result().row(KELVO_VARINT, {1, -2, 3});
  EXPECT_EQ("1 -2 3\n", shown());
}

TEST_F(RenderTest, ListWithCountZeroAndNoElementsIsAnEmptyLine) {
  result().row(KELVO_VARBIGINT, {}).claiming(0);
  EXPECT_EQ("\n", shown());
}

TEST_F(RenderTest, CountLargerThanTheElementsLeavesABlankAfterTheLast) {
  result().row(KELVO_VARINT, {1, 2, 3}).claiming(4);
  EXPECT_EQ("1 2 3 \n", shown());
}

TEST_F(RenderTest, CountOfZeroWhileElementsComeLeavesABlankAfterTheLast) {
  result().row(KELVO_VARINT, {1, 2, 3}).claiming(0);
  EXPECT_EQ("1 2 3 \n", shown());
}

TEST_F(RenderTest, NegativeCountLeavesABlankAfterTheLast) {
  result().row(KELVO_VARINT, {1, 2, 3}).claiming(-1);
  result().row(KELVO_VARINT, {4, 5}).claiming(std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ("1 2 3 \n4 5 \n", shown());
}

TEST_F(RenderTest, CountSmallerThanTheElementsRunsTheRestTogether) {
  result().row(KELVO_VARINT, {1, 2, 3, 4}).claiming(2);
  EXPECT_EQ("1 234\n", shown());
}

TEST_F(RenderTest, CountOfOneRunsAllElementsTogether) {
  result().row(KELVO_VARINT, {1, 2, 3}).claiming(1);
  EXPECT_EQ("123\n", shown());
}

TEST_F(RenderTest, LargestCountIsCountedDownAsAnyOther) {
  result().row(KELVO_VARINT, {1, 2}).claiming(std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ("1 2 \n", shown());
}

// --- Strings ---

TEST_F(RenderTest, CharPrintsItsCharactersAsOneWordAndAsksNoCount) {
  result().characters(KELVO_CHAR, "abc");
  EXPECT_EQ("abc\n", shown());
  EXPECT_EQ((Calls{"kelvo_cursor_next", "kelvo_cursor_get_data_type",               //
                   "kelvo_subcursor_next", "kelvo_subcursor_get_unsigned_tinyint",  //
                   "kelvo_subcursor_next", "kelvo_subcursor_get_unsigned_tinyint",  //
                   "kelvo_subcursor_next", "kelvo_subcursor_get_unsigned_tinyint",  //
                   "kelvo_subcursor_next", "kelvo_cursor_next"}),
            display_calls());
}

TEST_F(RenderTest, CharLengthNeverComesFromTheCount) {
  result().characters(KELVO_CHAR, "abc").claiming(1);
  EXPECT_EQ("abc\n", shown());
}

TEST_F(RenderTest, CharWithoutCharactersIsAnEmptyLine) {
  result().characters(KELVO_CHAR, "");
  EXPECT_EQ("\n", shown());
}

TEST_F(RenderTest, CharWritesEveryByteAsItIs) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  result().characters(KELVO_CHAR, bytes);
  EXPECT_EQ(bytes + "\n", shown());
}

TEST_F(RenderTest, CharIsNoMarkUp) {
  result().characters(KELVO_CHAR, "<b>%d</b>");
  EXPECT_EQ("<b>%d</b>\n", shown());
}

TEST_F(RenderTest, VarcharPrintsItsTextWhole) {
  result().text(KELVO_VARCHAR, "text with\ttab, \"quotes\" and \xff");
  EXPECT_EQ("text with\ttab, \"quotes\" and \xff\n", shown());
  EXPECT_EQ((Calls{"kelvo_cursor_next", "kelvo_cursor_get_data_type", "kelvo_cursor_get_char",
                   "kelvo_cursor_next"}),
            display_calls());
}

TEST_F(RenderTest, VarcharPrintsUpToItsFirstNul) {
  result().text(KELVO_VARCHAR, std::string("before\0after", 12));
  EXPECT_EQ("before\n", shown());
}

TEST_F(RenderTest, VarcharIsNeitherFormatNorMarkUp) {
  result().text(KELVO_VARCHAR, "%s%n<b>x</b>");
  EXPECT_EQ("%s%n<b>x</b>\n", shown());
}

TEST_F(RenderTest, EmptyVarcharIsAnEmptyLine) {
  result().text(KELVO_VARCHAR, "");
  EXPECT_EQ("\n", shown());
}

TEST_F(RenderTest, NullVarcharIsAnEmptyLineAndNoFailure) {
  result().text(KELVO_VARCHAR, std::nullopt).row(KELVO_INT, {1});
  EXPECT_EQ("\n1\n", shown());
  EXPECT_EQ(render_finished, outcome());
}

TEST_F(RenderTest, VarcharLongerThanAnyBufferIsWrittenWhole) {
  const std::string text(100000, 'x');
  result().text(KELVO_VARCHAR, text);
  EXPECT_EQ(text + "\n", shown());
}

// --- Types that are not shown ---

class UnexpectedTypeTest : public RenderTest, public testing::WithParamInterface<std::int32_t> {};

TEST_P(UnexpectedTypeTest, PrintsTheMessageAndNothingMore) {
  result().row(KELVO_INT, {1}).row(GetParam(), {}).row(KELVO_INT, {2});
  EXPECT_EQ("1\n" + unexpected_type, shown());
  EXPECT_EQ(render_unexpected_type, outcome());
  EXPECT_EQ((Calls{"kelvo_cursor_next", "kelvo_cursor_get_data_type", "kelvo_cursor_get_int",
                   "kelvo_cursor_next", "kelvo_cursor_get_data_type"}),
            display_calls());
}

TEST_P(UnexpectedTypeTest, ComesBeforeTheInterruptFlag) {
  interrupt_status = 1;
  result().row(GetParam(), {});
  EXPECT_EQ(unexpected_type, shown());
  EXPECT_EQ(render_unexpected_type, outcome());
}

// Codes are compared whole, never as a mask: combinations of known types are no type.
INSTANTIATE_TEST_SUITE_P(Codes, UnexpectedTypeTest,
                         testing::Values(KELVO_ENUMERATION, KELVO_COMPOUND, 8388608, 0, 3, -1,
                                         KELVO_INT | KELVO_VARCHAR, 67108864,
                                         std::numeric_limits<std::int32_t>::min(),
                                         std::numeric_limits<std::int32_t>::max()));

// --- The interrupt flag ---

TEST_F(RenderTest, FlagInsideALongListEndsTheLineAfterTheElementsBlank) {
  result().row(KELVO_VARINT, {1, 2, 3, 4, 5}).row(KELVO_INT, {6});
  result().on("kelvo_subcursor_get_int", 3, raise_flag);
  EXPECT_EQ("1 2 3 \n" + bold_interrupted, shown());
  EXPECT_EQ(render_interrupted, outcome());
  EXPECT_EQ("kelvo_subcursor_get_int", display_calls().back());
}

TEST_F(RenderTest, FlagIsNotLookedAtAfterTheFinalElementButAfterItsLine) {
  result().row(KELVO_VARINT, {1, 2}).row(KELVO_INT, {3});
  result().on("kelvo_subcursor_get_int", 2, raise_flag);
  EXPECT_EQ("1 2\n" + bold_interrupted, shown());
  EXPECT_EQ("kelvo_subcursor_next", display_calls().back());
}

TEST_F(RenderTest, FlagIsNotLookedAtBetweenElementsThatRunTogether) {
  result().row(KELVO_VARINT, {1, 2, 3, 4}).claiming(2);
  result().on("kelvo_subcursor_get_int", 2, raise_flag);
  EXPECT_EQ("1 234\n" + bold_interrupted, shown());
}

TEST_F(RenderTest, FlagInsideCharStopsAfterTheCharacter) {
  result().characters(KELVO_CHAR, "abc").on("kelvo_subcursor_get_unsigned_tinyint", 2, raise_flag);
  EXPECT_EQ("ab\n" + bold_interrupted, shown());
  EXPECT_EQ("kelvo_subcursor_get_unsigned_tinyint", display_calls().back());
}

TEST_F(RenderTest, FlagAfterTheLastCharacterOfACharIsSeenAfterItsLine) {
  result().characters(KELVO_CHAR, "a").on("kelvo_subcursor_next", 2, raise_flag);
  EXPECT_EQ("a\n" + bold_interrupted, shown());
}

TEST_F(RenderTest, FlagDuringAVarcharStopsAfterIt) {
  result().text(KELVO_VARCHAR, "one").text(KELVO_VARCHAR, "two");
  result().on("kelvo_cursor_get_char", 1, raise_flag);
  EXPECT_EQ("one\n" + bold_interrupted, shown());
}

TEST_F(RenderTest, FlagDuringAnEmptyListIsSeenAfterItsLine) {
  result().row(KELVO_VARINT, {}).on("kelvo_subcursor_next", 1, raise_flag);
  EXPECT_EQ("\n" + bold_interrupted, shown());
}

TEST_F(RenderTest, FlagUpFromTheStartStopsAfterTheFirstScalar) {
  interrupt_status = 1;
  result().row(KELVO_INT, {1}).row(KELVO_INT, {2});
  EXPECT_EQ("1\n" + bold_interrupted, shown());
}

TEST_F(RenderTest, FlagUpFromTheStartStopsAfterTheFirstCharacter) {
  interrupt_status = 1;
  result().characters(KELVO_CHAR, "abc");
  EXPECT_EQ("a\n" + bold_interrupted, shown());
}

TEST_F(RenderTest, FlagUpFromTheStartStopsAfterTheFirstInnerElement) {
  interrupt_status = 1;
  result().row(KELVO_VARINT, {1, 2});
  EXPECT_EQ("1 \n" + bold_interrupted, shown());
}

TEST_F(RenderTest, FlagUpFromTheStartLetsAListOfOneElementPass) {
  interrupt_status = 1;
  result().row(KELVO_VARINT, {1});
  EXPECT_EQ("1\n" + bold_interrupted, shown());
}

TEST_F(RenderTest, FlagUpFromTheStartDoesNotConcernAnEmptyResult) {
  interrupt_status = 1;
  EXPECT_EQ("", shown());
  EXPECT_EQ(render_finished, outcome());
}

TEST_F(RenderTest, FlagRaisedAtTheEndOfTheRowsIsNotLookedAt) {
  result().row(KELVO_INT, {1}).on("kelvo_cursor_next", 2, raise_flag);
  EXPECT_EQ("1\n", shown());
  EXPECT_EQ(render_finished, outcome());
}

TEST_F(RenderTest, OnlyAFlagOfOneInterrupts) {
  interrupt_status = 2;
  result().row(KELVO_INT, {1}).row(KELVO_VARINT, {2, 3}).characters(KELVO_CHAR, "ab");
  EXPECT_EQ("1\n2 3\nab\n", shown());
  EXPECT_EQ(render_finished, outcome());
}

TEST_F(RenderTest, FlagIsLeftUp) {
  result().row(KELVO_INT, {1}).on("kelvo_cursor_get_int", 1, raise_flag);
  shown();
  EXPECT_EQ(1, interrupt_status);
}

}  // namespace
