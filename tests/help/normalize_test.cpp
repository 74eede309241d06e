// The normalised form of statements.
#include "help/normalize.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

namespace {

// Nothing may be written past the source's length and the NUL: the sanitizers watch the end.
std::string normalized(const std::string& source) {
  std::vector<char> destination(source.size() + 1, '?');
  normalize_text(source.c_str(), destination.data());
  return destination.data();
}

}  // namespace

TEST(Normalize, CollapsesBlanksAndTrims) { EXPECT_EQ("HELP ALL", normalized("  help \t all  ")); }

TEST(Normalize, TurnsATabIntoASpace) { EXPECT_EQ("A B", normalized("a\tb")); }

TEST(Normalize, BlanksAloneGiveTheEmptyText) {
  EXPECT_EQ("", normalized("\t \t"));
  EXPECT_EQ("", normalized(" "));
}

TEST(Normalize, EmptySourceGivesTheEmptyText) { EXPECT_EQ("", normalized("")); }

TEST(Normalize, OtherWhiteSpaceIsNoBlank) {
  EXPECT_EQ("EXIT\r", normalized("exit\r"));
  EXPECT_EQ("A\nB", normalized("a\nb"));
  EXPECT_EQ("\v A \f", normalized("\v a \f"));
}

TEST(Normalize, KeepsPunctuation) { EXPECT_EQ("HELP ALL;", normalized("help all;")); }

TEST(Normalize, KnowsNothingOfQuotes) { EXPECT_EQ("SELECT 'A B'", normalized("Select 'a  b'")); }

TEST(Normalize, LeavesUpperCaseAndDigits) { EXPECT_EQ("X1 Y2", normalized("X1 y2")); }

TEST(Normalize, TakesOneBlankBetweenWordsAsItIs) { EXPECT_EQ("A B C", normalized("a b c")); }

TEST(Normalize, LeavesTheSourceAlone) {
  const char source[] = " a\tb ";
  char destination[sizeof source];
  normalize_text(source, destination);
  EXPECT_STREQ(" a\tb ", source);
}

TEST(Normalize, EveryOtherByteGoesThroughToupper) {
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == ' ' || byte == '\t') continue;
    const std::string expected(1, static_cast<char>(std::toupper(byte)));
    EXPECT_EQ(expected, normalized(std::string(1, static_cast<char>(byte)))) << byte;
  }
}

TEST(Normalize, HoldsALongestStatement) {
  EXPECT_EQ(std::string(1023, 'X'), normalized(std::string(1023, 'x')));
}
