// LIKE and GLOB.
#include "values/pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

struct Case {
  const char* pattern;
  const char* text;
  bool matches;
};

TEST(Like, WildcardsAndPlainText) {
  constexpr Case cases[] = {
      {"", "", true},          {"", "a", false},          {"a", "a", true},
      {"a", "A", false},       {"a", "ab", false},        {"%", "", true},
      {"%", "abc", true},      {"a%", "a", true},         {"a%", "ba", false},
      {"%b%", "abc", true},    {"%b", "abab", true},      {"%ab%ab", "ab", false},
      {"_", "", false},        {"_", "a", true},          {"_", "ab", false},
      {"a_c%", "abcd", true},  {"%_", "", false},         {"%%", "x", true},
      {"a/%", "a/b/c", true},  {"t*", "t*", true},        {"t*", "tt", false},
      {"_", "\xc3\xa9", true}, {"__", "\xc3\xa9", false}, {"_", "\xff", true},
  };
  for (const Case& one : cases)
    EXPECT_EQ(one.matches, like(one.pattern, one.text)) << one.pattern << " of " << one.text;
}

TEST(Like, EscapeTakesTheMeaningOfAWildcard) {
  EXPECT_TRUE(like("100!%", "100%", '!'));
  EXPECT_FALSE(like("100!%", "1000", '!'));
  EXPECT_TRUE(like("a!_b", "a_b", '!'));
  EXPECT_FALSE(like("a!_b", "axb", '!'));
  EXPECT_TRUE(like("a!!b", "a!b", '!'));
  EXPECT_TRUE(like("%%", "%", '%'));
  EXPECT_FALSE(like("%%", "x", '%'));
  EXPECT_TRUE(like("a!", "a!", '!'));
}

TEST(Like, ManyWildcardsTakeNoExponentialTime) {
  const std::string text(5000, 'a');
  EXPECT_FALSE(like("%a%a%a%a%a%a%a%a%a%a%a%a%b", text));
}

TEST(Glob, StarsStayInANameAndDoubleStarsCross) {
  constexpr Case cases[] = {
      {"*", "abc", true},
      {"*", "a/b", false},
      {"*", "", true},
      {"a*c", "abc", true},
      {"a*c", "a/c", false},
      {"*/b", "a/b", true},
      {"*/b", "b", false},
      {"**", "a/b/c", true},
      {"a/**", "a/b/c", true},
      {"a/**", "a", false},
      {"**/c", "c", true},
      {"**/c", "a/b/c", true},
      {"**/c", "a/bc", false},
      {"a/**/c", "a/c", true},
      {"a/**/c", "a/b/b/c", true},
      {"**/b*", "a/xb", false},
      {"**/*b", "a/xb", true},
      {"**a*b", "a/ab", true},
      {"**/a*/c", "a1/b/a2/c", true},
      {"/a/*", "/a/b", true},
      {"**.h5", "x/y.h5", true},
      {"**/x/**", "a/x/b/x", true},
      {"*.dat", "a.data", false},
      {"***", "a/b", true},
  };
  for (const Case& one : cases)
    EXPECT_EQ(one.matches, glob(one.pattern, one.text)) << one.pattern << " of " << one.text;
}

TEST(Glob, QuestionMarksSetsAndBackslashes) {
  constexpr Case cases[] = {
      {"?", "a", true},         {"?", "", false},       {"?", "/", false},
      {"?", "\xc3\xa9", true},  {"[abc]", "b", true},   {"[abc]", "d", false},
      {"[a-c]x", "bx", true},   {"[!a-c]", "b", false}, {"[!a-c]", "d", true},
      {"[^a]", "b", true},      {"[]]", "]", true},     {"[a-]", "-", true},
      {"a[!b]c", "a/c", false}, {"[a", "[a", true},     {"\\*", "*", true},
      {"\\*", "a", false},      {"[\\]]", "]", true},   {"[\xc3\xa0-\xc3\xbf]", "\xc3\xa9", true},
      {"a\\", "a\\", true},
  };
  for (const Case& one : cases)
    EXPECT_EQ(one.matches, glob(one.pattern, one.text)) << one.pattern << " of " << one.text;
}

TEST(Glob, ManyWildcardsTakeNoExponentialTime) {
  const std::string path(1000, 'a');
  EXPECT_FALSE(glob("**a**a*a*a**a*a*a*a**a*a*a*b", path));
}

}  // namespace
}  // namespace kelvo
