// What all statement families share when they read their text: keywords, symbols, names, numbers,
// and errors that say what was expected. A family reads its whole statement, expect_end() last,
// before it does anything.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "language/lexer.h"
#include "values/pattern.h"

namespace kelvo {

/// An object as it was written: "path", "path@attribute", "@attribute", any of them with "IN file".
struct ObjectName {
  std::string path;                      // "" where only an attribute was named, or nothing
  std::optional<std::string> attribute;  // without the "@"
  std::optional<std::string> file;       // after IN
};

class Parser {
 public:
  /// Stands where a grammar calls itself. Throws, with a position, before the calls use up the
  /// stack: deeper than 200 of them.
  class Nesting {
   public:
    explicit Nesting(Parser& parser);
    ~Nesting() { --parser_.depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    Parser& parser_;
  };

  /// `statement` must outlive the parser.
  explicit Parser(std::string_view statement) : statement_(statement) {}

  /// The next token, not consumed. The reference is good until the next call of any function but
  /// peek in the same mode.
  const Token& peek(Mode mode = Mode::words);
  /// The next token, consumed.
  Token take(Mode mode = Mode::words);

  /// Whether the keyword (in capitals) is next.
  bool at_keyword(std::string_view keyword, Mode mode = Mode::words);
  /// Consumes the keyword (in capitals) if it is next. `keywords` may be several, separated by one
  /// blank: all or none.
  bool accept_keyword(std::string_view keywords, Mode mode = Mode::words);
  /// Consumes the keywords if the first one is next; the others must follow then.
  bool accept_clause(std::string_view keywords, Mode mode = Mode::words);
  bool accept_symbol(std::string_view symbol, Mode mode = Mode::words);
  /// Consumes the name of a function (in capitals) and "(" if both are next in an expression.
  bool accept_call(std::string_view name);

  /// How many of the leading words of `keywords` are next, one after the other. Consumes nothing.
  std::size_t matching_words(std::string_view keywords);

  /// As accept, but anything else is an error that names what was expected.
  void expect_keyword(std::string_view keywords, Mode mode = Mode::words);
  void expect_symbol(std::string_view symbol, Mode mode = Mode::words);
  /// The error names the keywords too that were looked for here in vain, as all of them could stand
  /// here.
  void expect_end(Mode mode = Mode::words);
  /// Whether the statement ends here. Throws where something stands behind its ";".
  bool at_end(Mode mode = Mode::words);

  /// A path of words and quoted names, without blanks between them; `what` names it in the error,
  /// with its article: "a file".
  std::string expect_path(std::string_view what);
  bool at_path();
  /// The path of a file. That no FILE stands before it is said where one does.
  std::string expect_file();

  /// An object or an attribute of the file in use.
  ObjectName expect_place(std::string_view what);
  /// An object, an attribute, or either of them with IN file.
  ObjectName expect_object(std::string_view what);
  /// The same where it may be left out: then everything in it is empty, though IN may still follow.
  ObjectName optional_object();
  /// An attribute "object@name" or "@name", without IN.
  ObjectName expect_attribute();

  /// The name that is next in an expression, with the names that dots join to it: pos.x, "my
  /// pos".x, "my pos"."x".
  std::string take_member_path();

  std::string expect_string(std::string_view what);
  /// What stands behind LIKE: 'pattern' [ESCAPE 'c'], of which c is one byte.
  LikePattern expect_like_pattern(Mode mode = Mode::words);
  /// An unsigned decimal or hexadecimal integer of at most `maximum`.
  std::uint64_t expect_unsigned(std::string_view what, std::uint64_t maximum = UINT64_MAX);

  /// Throws the error `Expected ..., found "..."` at the next token.
  [[noreturn]] void fail_expected(std::string_view what, Mode mode = Mode::words);
  /// The same in an expression, where a string that lacks its quotes is told so.
  [[noreturn]] void fail_expected_value(std::string_view what);

 private:
  bool accept_words(std::string_view keywords, Mode mode);
  void note_missing(std::string_view keywords);
  bool goes_on(const std::string& path);
  void attribute_rest(ObjectName* object);
  ObjectName file_rest(ObjectName object);

  std::string_view statement_;
  std::size_t depth_ = 0;   // of grammars within grammars
  std::size_t offset_ = 0;  // of the first byte not consumed
  Mode mode_ = Mode::words;
  std::optional<Token> lookahead_;    // the token at offset_, read in mode_
  std::vector<std::string> missing_;  // keywords looked for in vain at missing_at_
  std::size_t missing_at_ = 0;
};

}  // namespace kelvo
