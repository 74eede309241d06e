// Cutting a text into statements: line ends, blank lines, comments, line numbers.
#include "executor/splitter.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

// Statements with the numbers of their lines.
using Statements = std::vector<std::pair<int, std::string>>;

Statements split(std::string text) {
  Statements statements;
  StatementScan scan = start_scan(text.data());
  while (const char* statement = next_statement(&scan)) {
    statements.emplace_back(scan.line_number, statement);
  }
  return statements;
}

}  // namespace

TEST(Splitter, EmptyTextHoldsNoStatement) { EXPECT_EQ(Statements{}, split("")); }

TEST(Splitter, BlankAndCommentLinesHoldNoStatement) {
  EXPECT_EQ(Statements{}, split(" \t \n\n# a\n \t#b\r\n\r\n#"));
}

TEST(Splitter, OneStatementNeedsNoLineEnd) {
  EXPECT_EQ((Statements{{1, "show group"}}), split("show group"));
}

TEST(Splitter, EachLineIsAStatement) {
  EXPECT_EQ((Statements{{1, "a"}, {2, "b"}}), split("a\nb"));
  EXPECT_EQ((Statements{{1, "a"}, {2, "b"}}), split("a\nb\n"));
}

TEST(Splitter, BlankAndCommentLinesCountInTheLineNumber) {
  EXPECT_EQ((Statements{{3, "a"}}), split("# comment\n\na\n"));
  EXPECT_EQ((Statements{{1, "a"}, {5, "b"}}), split("a\r\n\r\n#\r\n \r\nb"));
}

TEST(Splitter, BlanksAroundAStatementAreKept) {
  EXPECT_EQ((Statements{{1, "\t a \t"}, {2, " b "}}), split("\t a \t\n b "));
}

TEST(Splitter, BlanksBeforeTheSignMakeACommentLineToo) {
  EXPECT_EQ((Statements{{2, "a"}}), split(" \t # comment\na"));
}

TEST(Splitter, SignAfterContentBelongsToTheStatement) {
  EXPECT_EQ((Statements{{1, "a # b"}, {2, "c#"}}), split("a # b\nc#"));
}

TEST(Splitter, CommentEndsWithItsLine) {
  EXPECT_EQ((Statements{{2, "a"}, {4, "b"}}), split("#x\na\n#y\nb"));
}

TEST(Splitter, SecondSignOfACommentMeansNothing) {
  EXPECT_EQ((Statements{{2, "a"}}), split("# x # y\na"));
}

TEST(Splitter, CarriageReturnBeforeALineFeedBelongsToTheLineEnd) {
  EXPECT_EQ((Statements{{1, "a"}, {2, "b"}}), split("a\r\nb\r\n"));
}

TEST(Splitter, LoneCarriageReturnIsContent) {
  EXPECT_EQ((Statements{{1, "a\rb"}}), split("a\rb"));
  EXPECT_EQ((Statements{{1, "\r"}}), split("\r"));
  EXPECT_EQ((Statements{{1, " \r \t"}, {2, "a"}}), split(" \r \t\na"));
}

TEST(Splitter, CarriageReturnAtTheEndOfTheTextStays) {
  EXPECT_EQ((Statements{{1, "a\r"}}), split("a\r"));
  EXPECT_EQ((Statements{{1, "a"}, {2, "b\r"}}), split("a\nb\r"));
}

TEST(Splitter, OnlyTheLastOfSeveralCarriageReturnsBelongsToTheLineEnd) {
  EXPECT_EQ((Statements{{1, "\r"}, {2, "a\r"}}), split("\r\r\na\r\r\n"));
}

TEST(Splitter, CarriageReturnBeforeTheSignMakesItAStatement) {
  EXPECT_EQ((Statements{{1, "\r# a"}}), split("\r# a"));
}

TEST(Splitter, CarriageReturnOnACommentLineIsNoContent) {
  EXPECT_EQ((Statements{{2, "b"}}), split("# a\rx\nb"));
  EXPECT_EQ(Statements{}, split("#\r"));
}

TEST(Splitter, LineFeedAfterALineFeedIsAnEmptyLine) {
  EXPECT_EQ((Statements{{4, "a"}}), split("\n\n\na"));
}

TEST(Splitter, CarriageReturnAfterALineFeedBeginsALine) {
  EXPECT_EQ((Statements{{1, "a"}, {2, "\rb"}}), split("a\n\rb"));
}

TEST(Splitter, OtherWhiteSpaceIsContent) {
  EXPECT_EQ((Statements{{1, "\v"}, {2, "\f"}, {3, "\xa0"}}), split("\v\n\f\n\xa0"));
}

TEST(Splitter, QuotesAndTerminatorsMeanNothing) {
  EXPECT_EQ((Statements{{1, "a 'x"}, {3, "z'; b;"}}), split("a 'x\n# y\nz'; b;"));
}

TEST(Splitter, ContinuationBackslashesMeanNothing) {
  EXPECT_EQ((Statements{{1, "a\\"}, {2, "b"}}), split("a\\\nb"));
}

TEST(Splitter, StatementsLieInTheTextItself) {
  char text[] = " a\nb";
  StatementScan scan = start_scan(text);
  EXPECT_EQ(text, next_statement(&scan));
  EXPECT_EQ(text + 3, next_statement(&scan));
}

TEST(Splitter, TextAfterAStatementIsNotLookedAtYet) {
  char text[] = "a\nb\nc";
  StatementScan scan = start_scan(text);
  next_statement(&scan);
  EXPECT_EQ(std::string("a\0b\nc", 5), std::string(text, 5));
}

TEST(Splitter, UsedUpTextStaysUsedUp) {
  char text[] = "a\n";
  StatementScan scan = start_scan(text);
  next_statement(&scan);
  EXPECT_EQ(nullptr, next_statement(&scan));
  EXPECT_EQ(nullptr, next_statement(&scan));
}
