// Cuts a statement into tokens. What a byte means depends on where it stands: where an object or a
// file is expected, "/data/a-b.c" is one word; in an expression it is names and operators. So the
// caller says which it expects.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelvo {

enum class Mode {
  words,       // keywords, paths, file names, URLs: bytes up to a blank or one of , ; ( ) [ ] ' " @
  expression,  // identifiers, numbers, operators
};

enum class TokenKind {
  word,         // unquoted: a keyword, path or identifier
  quoted_name,  // "..." or E"..."; without NUL bytes
  string,       // '...' or E'...'
  bytes,        // X'...'
  number,       // unsigned: 12, 0x1f, 1.5, 1e-3
  symbol,       // , ( ) [ ] @ : * + - / % = < > <= >= <> != ...
  end,          // of the statement
};

struct Token {
  TokenKind kind = TokenKind::end;
  std::string text;          // unquoted and unescaped; string and bytes may hold NUL bytes
  std::size_t position = 1;  // of its first byte, from 1
  std::size_t next = 0;      // offset of the first byte after it, from 0

  [[nodiscard]] bool is_symbol(std::string_view symbol) const {
    return kind == TokenKind::symbol && text == symbol;
  }
  /// Whether it is this keyword (given in capitals), in any letter case. A quoted name never is
  /// one.
  [[nodiscard]] bool is_keyword(std::string_view keyword) const;
};

/// The token that begins at or after `offset` (from 0), blanks and comments passed over. One ";"
/// may end the statement. Throws StatementError with the position of a quote that is not closed, a
/// bad escape or number, a byte that begins nothing, or of what follows the ";".
Token scan_token(std::string_view statement, std::size_t offset, Mode mode);

/// The token as a message shows it: its text between quotes, or "the end of the statement".
std::string describe(const Token& token, std::string_view statement);

/// ASCII letters of `text` in capitals; other bytes as they are.
std::string to_upper(std::string_view text);

}  // namespace kelvo
