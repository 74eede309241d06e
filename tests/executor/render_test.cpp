// The display of results: every type's getters, element lists whose count lies, strings, and types
// that are not shown.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "executor/render_fixture.h"

namespace {

using scripted::Calls;
using scripted::Element;

const std::string unexpected_type =
    "Error when showing result of the operation as the data type is unexpected.\n";

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

}  // namespace
