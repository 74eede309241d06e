// Tokens, and what is none.
#include "language/lexer.h"

#include <gtest/gtest.h>

#include <vector>

#include "error.h"

namespace kelvo {
namespace {

using Texts = std::vector<std::string>;

Texts tokens(std::string_view statement, Mode mode) {
  Texts texts;
  for (std::size_t offset = 0;;) {
    const Token token = scan_token(statement, offset, mode);
    if (token.kind == TokenKind::end) return texts;
    texts.push_back(token.text);
    offset = token.next;
  }
}

Token first(std::string_view statement, Mode mode = Mode::expression) {
  return scan_token(statement, 0, mode);
}

TEST(Lexer, PathIsOneWord) {
  EXPECT_EQ(Texts({"SHOW", "TYPE", "/a-b.c/d:e+f*g?h~i%j"}),
            tokens("SHOW TYPE /a-b.c/d:e+f*g?h~i%j", Mode::words));
}

TEST(Lexer, ExpressionIsNamesAndOperators) {
  EXPECT_EQ(Texts({"pos.x", "-", "1.5e-3", "<=", "0x1F", "*", "a_1"}),
            tokens("pos.x-1.5e-3<=0x1F*a_1", Mode::expression));
}

TEST(Lexer, SliceIsNumbersAndSymbols) {
  EXPECT_EQ(Texts({"[", "1", ":", "2", ",", "...", ",", "-", "1", "]"}),
            tokens("[1:2,...,-1]", Mode::expression));
}

TEST(Lexer, AttributeEndsAWord) { EXPECT_EQ(Texts({"a", "@", "b"}), tokens("a@b", Mode::words)); }

TEST(Lexer, CommentBeginsAWord) {
  EXPECT_EQ(Texts({"a#b", "c--d"}), tokens("a#b c--d # comment", Mode::words));
  EXPECT_EQ(Texts({"a"}), tokens("a -- comment", Mode::words));
}

TEST(Lexer, SemicolonMayEndTheStatement) {
  EXPECT_EQ(Texts({"a"}), tokens("a ; # comment", Mode::words));
}

TEST(Lexer, QuotesAreDoubledInside) {
  EXPECT_EQ("it's", first("'it''s'").text);
  EXPECT_EQ("a\"b", first("\"a\"\"b\"").text);
  EXPECT_EQ(TokenKind::quoted_name, first("\"a\"").kind);
}

TEST(Lexer, QuotedNameIsNoKeyword) {
  EXPECT_TRUE(first("from").is_keyword("FROM"));
  EXPECT_FALSE(first("\"FROM\"").is_keyword("FROM"));
}

TEST(Lexer, EscapesStandForTheirBytes) {
  EXPECT_EQ(std::string("\n\t\r\\'\"\0A\xc3\xa9\xe6\xbc\xa2", 13),
            first(R"(E'\n\t\r\\\'\"\0\x41\u00e9\u6f22')").text);
}

TEST(Lexer, NamesMayBeEscapedToo) {
  EXPECT_EQ("a\nb\"c'\"", first(R"(E"a\nb\"c'""")").text);
  EXPECT_EQ(TokenKind::quoted_name, first(R"(e"a")", Mode::words).kind);
  EXPECT_EQ(Texts({"E", "a", "E"}), tokens(R"(E E"a" E)", Mode::words));
}

TEST(Lexer, BytesAreHexadecimalPairs) {
  EXPECT_EQ(std::string("\0\xff", 2), first("X'00fF'").text);
  EXPECT_EQ(TokenKind::bytes, first("x''").kind);
}

TEST(Lexer, PositionsCountFromOne) { EXPECT_EQ(3U, first("  abc").position); }

struct Mistake {
  const char* statement;
  std::int32_t position;
  const char* message;
};

class LexerMistakes : public testing::TestWithParam<Mistake> {};

TEST_P(LexerMistakes, AreToldWithTheirPosition) {
  const Mistake& mistake = GetParam();
  try {
    tokens(mistake.statement, Mode::expression);
    FAIL() << mistake.statement;
  } catch (const StatementError& error) {
    EXPECT_EQ(mistake.message, std::string(error.what()));
    EXPECT_EQ(mistake.position, error.position());
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, LexerMistakes,
    testing::Values(
        Mistake{"a 'b", 3, "String is not closed"},
        Mistake{"a \"b", 3, "Quoted name is not closed"},
        Mistake{"a E\"b", 3, "Quoted name is not closed"},
        Mistake{R"(E"a\0")", 4, "Expected no null byte in a name"},
        Mistake{R"(E"\u0000")", 3, "Expected no null byte in a name"},
        Mistake{R"(E"\q")", 3, R"(Expected one of the escapes \n \t \r \\ \' \" \0 \xHH \uXXXX)"},
        Mistake{"X'00", 1, "String of bytes is not closed"},
        Mistake{"X'0'", 3, "Expected pairs of hexadecimal digits in X'...'"},
        Mistake{"E'a\\q'", 4, R"(Expected one of the escapes \n \t \r \\ \' \" \0 \xHH \uXXXX)"},
        Mistake{"E'\\x4'", 3, R"(Expected one of the escapes \n \t \r \\ \' \" \0 \xHH \uXXXX)"},
        Mistake{"1x", 1, "Expected a number, found \"1x\""},
        Mistake{"0x", 1, "Expected a number, found \"0x\""},
        Mistake{"a ! b", 3, "Expected a name, a value or an operator, found \"!\""}));

}  // namespace
}  // namespace kelvo
