// The road of a text: which lines run, and what a failed one ends.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "executor/execute.h"
#include "executor/execute_fixture.h"
#include "support/capture.h"
#include "support/scripted_engine.h"

namespace {

using scripted::Calls;
using scripted::engine;

// --- Lines and statements ---

TEST_F(ExecuteTest, EmptyTextRunsNothing) {
  EXPECT_EQ(0, run(""));
  EXPECT_EQ("", output());
  EXPECT_EQ("", saved());
  EXPECT_EQ(Calls{"kelvo_cursor_clear(null)"}, engine().calls());
}

TEST_F(ExecuteTest, TextOfBlankAndCommentLinesRunsNothing) {
  EXPECT_EQ(0, run("\n  \t \n# comment\r\n \t# comment\n\r\n#"));
  EXPECT_EQ("", output());
  EXPECT_EQ("", saved());
  EXPECT_EQ(Calls{"kelvo_cursor_clear(null)"}, engine().calls());
}

TEST_F(ExecuteTest, TwoLinesAreTwoStatementsWithTwoCountLines) {
  EXPECT_EQ(0, run("show group\nshow dataset"));
  EXPECT_EQ((Calls{"show group", "show dataset"}), engine().executed());
  EXPECT_EQ(no_elements + no_elements, output());
  EXPECT_EQ("show group\nshow dataset\n", saved());
}

TEST_F(ExecuteTest, CallsOfATextComeInOrderAndTheCursorIsClearedOnce) {
  engine().answers("a").row(KELVO_INT, {1}).count(1);
  EXPECT_EQ(0, run("a\nb\n"));
  EXPECT_EQ((Calls{"kelvo_execute(a)", "kelvo_cursor_next(null)",
                   "kelvo_cursor_get_data_type(null)", "kelvo_cursor_get_int(null)",
                   "kelvo_cursor_next(null)", "_kelvo_get_last_data_count()",  //
                   "kelvo_execute(b)", "kelvo_cursor_next(null)", "_kelvo_get_last_data_count()",
                   "kelvo_cursor_clear(null)"}),
            engine().calls());
}

TEST_F(ExecuteTest, WhatTheEnginePrintsItselfComesInOrder) {
  const auto print = [] { std::fputs("debug\n", stdout); };
  engine().answers("a").row(KELVO_INT, {1});
  engine().answers("b").row(KELVO_INT, {2}).on("kelvo_execute", 1, print);
  run("a\nb");
  EXPECT_EQ("1\n" + no_elements + "debug\n2\n" + no_elements, output());
}

TEST_F(ExecuteTest, StatementIsPassedAndSavedAsTyped) {
  EXPECT_EQ(0, run("  Show\tGroup 'a  b' ;  \n"));
  EXPECT_EQ(Calls{"  Show\tGroup 'a  b' ;  "}, engine().executed());
  EXPECT_EQ("  Show\tGroup 'a  b' ;  \n", saved());
}

TEST_F(ExecuteTest, CommentAfterAStatementIsPartOfIt) {
  EXPECT_EQ(0, run("show group # all of them"));
  EXPECT_EQ(Calls{"show group # all of them"}, engine().executed());
  EXPECT_EQ("show group # all of them\n", saved());
}

TEST_F(ExecuteTest, BlanksBeforeANumberSignMakeAComment) {
  EXPECT_EQ(0, run("  \t# show group\n"));
  EXPECT_EQ(Calls{}, engine().executed());
}

TEST_F(ExecuteTest, CarriageReturnAndLineFeedEndALine) {
  EXPECT_EQ(0, run("a\r\nb\r\n"));
  EXPECT_EQ((Calls{"a", "b"}), engine().executed());
  EXPECT_EQ("a\nb\n", saved());
}

TEST_F(ExecuteTest, LoneCarriageReturnIsContent) {
  EXPECT_EQ(0, run("a\rb\n \r \n"));
  EXPECT_EQ((Calls{"a\rb", " \r "}), engine().executed());
}

TEST_F(ExecuteTest, CarriageReturnAtTheEndStaysInTheStatement) {
  EXPECT_EQ(0, run("a\r"));
  EXPECT_EQ(Calls{"a\r"}, engine().executed());
  EXPECT_EQ("a\r\n", saved());
}

TEST_F(ExecuteTest, OnlyTheLastOfSeveralCarriageReturnsBelongsToTheLineEnd) {
  EXPECT_EQ(0, run("a\r\r\n"));
  EXPECT_EQ(Calls{"a\r"}, engine().executed());
}

TEST_F(ExecuteTest, VerticalTabAndFormFeedAreContent) {
  EXPECT_EQ(0, run("\v\n\f\n"));
  EXPECT_EQ((Calls{"\v", "\f"}), engine().executed());
}

TEST_F(ExecuteTest, QuotesDoNotHoldALineTogether) {
  EXPECT_EQ(0, run("a 'b\nc'"));
  EXPECT_EQ((Calls{"a 'b", "c'"}), engine().executed());
}

TEST_F(ExecuteTest, LaterLinesAreNotTouchedBeforeAnEarlierOneHasRun) {
  char text[] = "a\r\nb\nc";
  std::string rest;
  engine().answers("a").on("kelvo_execute", 1, [&] { rest = text + 3; });
  capture_stdout([&] { execute(text, 0, "", nullptr); });
  EXPECT_EQ("b\nc", rest);
}

TEST_F(ExecuteTest, TextIsSplitInPlace) {
  char text[] = "a\r\nb\n";
  capture_stdout([&] { execute(text, 0, "", nullptr); });
  EXPECT_STREQ("a", text);
  EXPECT_EQ('\0', text[1]);
  EXPECT_STREQ("b", text + 3);
  EXPECT_EQ('\0', text[4]);
}

// --- Failures ---

TEST_F(ExecuteTest, StatusMinusOneShowsLinePositionAndStatus) {
  engine().fails("bad", -1, 12, "Unknown statement");
  EXPECT_EQ(-1, run("bad"));
  EXPECT_EQ("Unknown statement (line 1 at position 12 - status -1).\n", output());
}

TEST_F(ExecuteTest, StatusMinusOneAsksForThePositionOnceAndBeforeTheMessage) {
  engine().fails("bad", -1, 1, "No");
  run("bad");
  EXPECT_EQ((Calls{"kelvo_execute(bad)", "kelvo_error_get_position()", "kelvo_error_get_message()",
                   "kelvo_cursor_clear(null)"}),
            engine().calls());
}

TEST_F(ExecuteTest, PositionIsPrintedAsItComes) {
  for (const int position : {0, -7, INT_MAX, INT_MIN}) {
    engine().reset();
    engine().fails("bad", -1, position, "No");
    run("bad");
    EXPECT_EQ("No (line 1 at position " + std::to_string(position) + " - status -1).\n", output());
  }
}

class OtherStatusTest : public ExecuteTest, public testing::WithParamInterface<int> {};

TEST_P(OtherStatusTest, ShowsMessageAndStatusAndAsksForNoPosition) {
  engine().fails("bad", GetParam(), 5, "File not found");
  EXPECT_EQ(GetParam(), run("bad"));
  EXPECT_EQ("File not found (status " + std::to_string(GetParam()) + ").\n", output());
  EXPECT_EQ((Calls{"kelvo_execute(bad)", "kelvo_error_get_message()", "kelvo_cursor_clear(null)"}),
            engine().calls());
}

INSTANTIATE_TEST_SUITE_P(Values, OtherStatusTest,
                         testing::Values(1, 2, 28, -2, 255, 256, INT_MAX, INT_MIN));

TEST_F(ExecuteTest, ErrorMessageIsNeitherFormatNorMarkUp) {
  engine().fails("bad", 3, 0, "<b>%s%n</b>");
  run("bad");
  EXPECT_EQ("<b>%s%n</b> (status 3).\n", output());
}

TEST_F(ExecuteTest, ErrorMessageMayBeEmpty) {
  engine().fails("bad", -1, 0, "");
  run("bad");
  EXPECT_EQ(" (line 1 at position 0 - status -1).\n", output());
}

TEST_F(ExecuteTest, FailureInTheThirdLineStopsTheTextAndKeepsWhatRan) {
  engine().fails("three", -1, 4, "No");
  EXPECT_EQ(-1, run("one\ntwo\nthree\nfour\n"));
  EXPECT_EQ((Calls{"one", "two", "three"}), engine().executed());
  EXPECT_EQ(no_elements + no_elements + "No (line 3 at position 4 - status -1).\n", output());
  EXPECT_EQ("one\ntwo\n", saved());
}

TEST_F(ExecuteTest, BlankAndCommentLinesCountInTheLineNumber) {
  engine().fails("bad", -1, 1, "No");
  EXPECT_EQ(-1, run("# comment\n\nbad\n"));
  EXPECT_EQ("No (line 3 at position 1 - status -1).\n", output());
}

TEST_F(ExecuteTest, EveryKindOfLineEndCountsOnceInTheLineNumber) {
  engine().fails("bad", -1, 1, "No");
  EXPECT_EQ(-1, run("ok\r\n\r\n#\r\n\r \nbad"));
  EXPECT_EQ(no_elements + no_elements + "No (line 5 at position 1 - status -1).\n", output());
}

TEST_F(ExecuteTest, FailedStatementIsNotDisplayed) {
  engine().fails("bad", 1, 0, "No").row(KELVO_INT, {1}).count(1);
  run("bad");
  EXPECT_EQ("No (status 1).\n", output());
}

TEST_F(ExecuteTest, FailedStatementIsNotSaved) {
  engine().fails("bad", 1, 0, "No");
  run("bad");
  EXPECT_EQ("", saved());
}

}  // namespace
