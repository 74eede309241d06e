// Shared productions of the statement language, and the one place that makes "Expected ..., found
// ..." errors.
#include "language/parser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "error.h"

namespace kelvo {
namespace {

// Words that begin a clause, so that they end a statement's object where that may be left out.
// Quoted, they are names.
constexpr std::array<std::string_view, 10> clause_words = {
    "TO", "IN", "FROM", "VALUES", "SELECT", "WHERE", "LIKE", "GLOB", "RECURSIVE", "INTO"};

bool is_clause_word(const Token& token) {
  return std::any_of(clause_words.begin(), clause_words.end(),
                     [&token](std::string_view word) { return token.is_keyword(word); });
}

bool is_path(const Token& token) {
  return token.kind == TokenKind::quoted_name ||
         (token.kind == TokenKind::word && !is_clause_word(token));
}

// What most who come from other languages write first: a name between single quotes, or a keyword.
std::string_view name_hint(const Token& token) {
  if (token.kind == TokenKind::string) return " (names stand between double quotes)";
  if (is_clause_word(token)) return " (between double quotes a keyword is a name)";
  return "";
}

// Cuts the first word off keywords separated by one blank each.
std::string_view first_word(std::string_view* keywords) {
  const std::size_t end = std::min(keywords->find(' '), keywords->size());
  const std::string_view word = keywords->substr(0, end);
  keywords->remove_prefix(std::min(end + 1, keywords->size()));
  return word;
}

}  // namespace

Parser::Nesting::Nesting(Parser& parser) : parser_(parser) {
  constexpr std::size_t deepest = 200;
  if (parser.depth_ == deepest) {
    throw StatementError::at(parser.peek(Mode::expression).position,
                             "Expected at most " + std::to_string(deepest) + " levels");
  }
  ++parser.depth_;
}

const Token& Parser::peek(Mode mode) {
  if (!lookahead_ || mode_ != mode) {
    lookahead_ = scan_token(statement_, offset_, mode);
    mode_ = mode;
  }
  return *lookahead_;
}

Token Parser::take(Mode mode) {
  Token token = peek(mode);
  offset_ = token.next;
  lookahead_.reset();
  return token;
}

bool Parser::accept_words(std::string_view keywords, Mode mode) {
  const std::size_t start = offset_;
  for (std::string_view rest = keywords; !rest.empty();) {
    if (!peek(mode).is_keyword(first_word(&rest))) {
      if (offset_ != start) lookahead_.reset();
      offset_ = start;
      return false;
    }
    take(mode);
  }
  return true;
}

void Parser::note_missing(std::string_view keywords) {
  if (missing_at_ != offset_) missing_.clear();
  missing_at_ = offset_;
  if (std::find(missing_.begin(), missing_.end(), keywords) == missing_.end())
    missing_.emplace_back(keywords);
}

bool Parser::at_keyword(std::string_view keyword, Mode mode) {
  if (peek(mode).is_keyword(keyword)) return true;
  note_missing(keyword);
  return false;
}

bool Parser::accept_keyword(std::string_view keywords, Mode mode) {
  if (accept_words(keywords, mode)) return true;
  note_missing(keywords);
  return false;
}

bool Parser::accept_clause(std::string_view keywords, Mode mode) {
  std::string_view rest = keywords;
  if (!accept_words(first_word(&rest), mode)) {
    note_missing(keywords);
    return false;
  }
  if (!rest.empty()) expect_keyword(rest, mode);
  return true;
}

bool Parser::accept_call(std::string_view name) {
  const std::size_t start = offset_;
  if (!accept_words(name, Mode::expression)) return false;
  if (accept_symbol("(", Mode::expression)) return true;
  offset_ = start;
  lookahead_.reset();
  return false;
}

std::size_t Parser::matching_words(std::string_view keywords) {
  const std::size_t start = offset_;
  std::size_t count = 0;
  for (std::string_view rest = keywords; !rest.empty() && peek().is_keyword(first_word(&rest));
       ++count)
    take();
  offset_ = start;
  lookahead_.reset();
  return count;
}

bool Parser::accept_symbol(std::string_view symbol, Mode mode) {
  if (!peek(mode).is_symbol(symbol)) return false;
  take(mode);
  return true;
}

void Parser::expect_keyword(std::string_view keywords, Mode mode) {
  if (!accept_words(keywords, mode)) fail_expected(keywords, mode);
}

void Parser::expect_symbol(std::string_view symbol, Mode mode) {
  if (!accept_symbol(symbol, mode)) fail_expected(quoted(std::string(symbol)), mode);
}

void Parser::expect_end(Mode mode) {
  if (at_end(mode)) return;
  std::string words;
  if (missing_at_ == offset_) {
    for (const std::string& keywords : missing_) words += (words.empty() ? "" : ", ") + keywords;
  }
  fail_expected(words + (words.empty() ? "" : " or ") + "the end of the statement", mode);
}

bool Parser::at_end(Mode mode) {
  const Token& token = peek(mode);
  if (token.kind != TokenKind::end) return false;
  if (token.position > statement_.size()) return true;
  const Token behind = scan_token(statement_, token.position, Mode::words);
  if (behind.position <= statement_.size()) {
    throw StatementError::at(
        behind.position,
        "Expected the end of the statement behind \";\", found " +
            (behind.kind == TokenKind::end ? "\";\"" : describe(behind, statement_)));
  }
  return true;
}

bool Parser::at_path() { return is_path(peek()); }

std::string Parser::expect_path(std::string_view what) {
  if (!at_path() || peek().text.empty())
    fail_expected(std::string(what) + std::string(name_hint(peek())));
  std::string path = take().text;
  while (goes_on(path)) path += take().text;
  return path;
}

std::string Parser::expect_file() {
  const std::size_t start = offset_;
  const bool is_doubled = accept_words("FILE", Mode::words) && at_path();
  offset_ = start;
  lookahead_.reset();
  if (is_doubled) fail_expected("a file (its path, without the word FILE)");
  return expect_path("a file");
}

// Quotes may stand around single names of a path: "run 1"/t, ../"run 2"/t.
bool Parser::goes_on(const std::string& path) {
  const Token& next = peek();
  const bool is_piece = next.kind == TokenKind::word || next.kind == TokenKind::quoted_name;
  return is_piece && next.position == offset_ + 1 &&
         (path.ends_with('/') || next.text.starts_with('/'));
}

void Parser::attribute_rest(ObjectName* object) {
  if (!accept_symbol("@")) return;
  // Any word may be an attribute's name here: nothing else can stand behind the "@".
  const TokenKind kind = peek().kind;
  if ((kind != TokenKind::word && kind != TokenKind::quoted_name) || peek().text.empty()) {
    fail_expected("the name of an attribute");
  }
  object->attribute = take().text;
}

ObjectName Parser::file_rest(ObjectName object) {
  if (accept_keyword("IN")) object.file = expect_file();
  return object;
}

ObjectName Parser::expect_place(std::string_view what) {
  ObjectName object;
  if (!peek().is_symbol("@")) object.path = expect_path(what);
  attribute_rest(&object);
  return object;
}

ObjectName Parser::expect_object(std::string_view what) { return file_rest(expect_place(what)); }

ObjectName Parser::optional_object() {
  ObjectName object;
  if (at_path()) object.path = expect_path("an object");
  attribute_rest(&object);
  return file_rest(std::move(object));
}

ObjectName Parser::expect_attribute() {
  ObjectName object = expect_place("an attribute (object@name)");
  if (!object.attribute) fail_expected("\"@\" and the name of an attribute");
  return object;
}

// An identifier has its dots in it; only those beside quotes are left.
std::string Parser::take_member_path() {
  std::string path;
  for (;;) {
    const Token piece = take(Mode::expression);
    path += piece.text;
    const bool dot = offset_ < statement_.size() && statement_[offset_] == '.';
    if (!dot && (piece.kind == TokenKind::quoted_name || !piece.text.ends_with('.'))) return path;
    if (dot) path += statement_[offset_++];
    const Token& next = peek(Mode::expression);
    const bool is_name = next.kind == TokenKind::word || next.kind == TokenKind::quoted_name;
    if (!is_name || next.position != offset_ + 1)
      fail_expected("the name of a member", Mode::expression);
  }
}

std::string Parser::expect_string(std::string_view what) {
  if (peek(Mode::expression).kind != TokenKind::string) fail_expected_value(what);
  return take(Mode::expression).text;
}

LikePattern Parser::expect_like_pattern(Mode mode) {
  LikePattern pattern;
  pattern.text = expect_string("a pattern");
  if (!accept_keyword("ESCAPE", mode)) return pattern;
  const std::size_t position = peek(Mode::expression).position;
  const std::string escape = expect_string("the escape character");
  if (escape.size() != 1) throw StatementError::at(position, "Expected one escape character");
  pattern.escape = escape[0];
  return pattern;
}

std::uint64_t Parser::expect_unsigned(std::string_view what, std::uint64_t maximum) {
  const Token& token = peek(Mode::expression);
  if (token.kind != TokenKind::number) fail_expected(what, Mode::expression);
  const bool hexadecimal = token.text.size() > 2 && (token.text[1] == 'x' || token.text[1] == 'X');
  std::uint64_t value = 0;
  const char* end = token.text.data() + token.text.size();
  const auto result =
      std::from_chars(token.text.data() + (hexadecimal ? 2 : 0), end, value, hexadecimal ? 16 : 10);
  if (result.ec == std::errc::invalid_argument || result.ptr != end)
    fail_expected(what, Mode::expression);
  if (result.ec != std::errc() || value > maximum) {
    throw StatementError(Status::out_of_range, "Value " + token.text + " is too large for " +
                                                   std::string(what) + " (at most " +
                                                   std::to_string(maximum) + ")");
  }
  take(Mode::expression);
  return value;
}

void Parser::fail_expected_value(std::string_view what) {
  const TokenKind kind = peek(Mode::expression).kind;
  const bool is_name = kind == TokenKind::word || kind == TokenKind::quoted_name;
  fail_expected(std::string(what) + (is_name ? " (strings stand between single quotes)" : ""),
                Mode::expression);
}

void Parser::fail_expected(std::string_view what, Mode mode) {
  const Token& token = peek(mode);
  throw StatementError::at(
      token.position, "Expected " + std::string(what) + ", found " + describe(token, statement_));
}

}  // namespace kelvo
