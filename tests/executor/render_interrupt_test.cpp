// The places where the interrupt flag is looked at.
#include <gtest/gtest.h>

#include "executor/render_fixture.h"

namespace {

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
