// The scanner of statements: see lexer.h for the two ways of reading and language rules at each
// function.
#include "language/lexer.h"

#include <array>
#include <cstdint>

#include "error.h"

namespace kelvo {
namespace {

constexpr std::string_view word_enders = ",;()[]'\"@";

bool is_blank(char byte) { return byte == ' ' || byte == '\t' || byte == '\r'; }
bool is_digit(char byte) { return byte >= '0' && byte <= '9'; }

bool is_identifier_start(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' ||
         static_cast<unsigned char>(byte) >= 0x80;
}

// A dot stands between the members of nested compounds, so it is part of an identifier.
bool is_identifier_part(char byte) {
  return is_identifier_start(byte) || is_digit(byte) || byte == '.';
}

int hex_value(char byte) {
  if (is_digit(byte)) return byte - '0';
  if (byte >= 'a' && byte <= 'f') return byte - 'a' + 10;
  if (byte >= 'A' && byte <= 'F') return byte - 'A' + 10;
  return -1;
}

void append_utf8(std::string* text, std::uint32_t code) {
  const auto byte = [text](std::uint32_t value) { *text += static_cast<char>(value); };
  if (code < 0x80) {
    byte(code);
  } else if (code < 0x800) {
    byte(0xc0U | (code >> 6U));
    byte(0x80U | (code & 0x3fU));
  } else {
    byte(0xe0U | (code >> 12U));
    byte(0x80U | ((code >> 6U) & 0x3fU));
    byte(0x80U | (code & 0x3fU));
  }
}

// One statement being scanned; `at` is the offset of the byte looked at.
class Scanner {
 public:
  Scanner(std::string_view statement, std::size_t offset) : text_(statement), at_(offset) {}

  Token scan(Mode mode) {
    skip_blanks_and_comment();
    token_.position = at_ + 1;
    // What may stand behind a ";" is the parser's to say.
    if (done() || peek() == ';') {
      token_.kind = TokenKind::end;
    } else if (!scan_quoted()) {
      mode == Mode::words ? scan_word() : scan_expression_token();
    }
    token_.next = at_;
    return token_;
  }

 private:
  [[nodiscard]] bool done() const { return at_ >= text_.size(); }
  [[nodiscard]] char peek(std::size_t ahead = 0) const {
    return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
  }

  // A comment begins where a word would: "a#b" and "a--b" are words.
  void skip_blanks_and_comment() {
    while (!done() && is_blank(peek())) ++at_;
    if (peek() == '#' || (peek() == '-' && peek(1) == '-')) at_ = text_.size();
  }

  [[nodiscard]] bool at_escaped(char quote) const {
    return (peek() == 'E' || peek() == 'e') && peek(1) == quote;
  }

  bool scan_quoted() {
    if (peek() == '"') return scan_doubled('"', TokenKind::quoted_name);
    if (peek() == '\'') return scan_doubled('\'', TokenKind::string);
    if (at_escaped('"')) return scan_escaped('"', TokenKind::quoted_name);
    if (at_escaped('\'')) return scan_escaped('\'', TokenKind::string);
    if ((peek() == 'X' || peek() == 'x') && peek(1) == '\'') return scan_bytes();
    return false;
  }

  [[noreturn]] void fail_unclosed(std::string_view what) const {
    throw StatementError::at(token_.position, std::string(what) + " is not closed");
  }
  [[noreturn]] void fail_unclosed(TokenKind kind) const {
    fail_unclosed(kind == TokenKind::string ? "String" : "Quoted name");
  }

  // '...' and "...": the quote itself is written twice.
  bool scan_doubled(char quote, TokenKind kind) {
    token_.kind = kind;
    for (++at_; !done(); ++at_) {
      if (peek() == quote && peek(1) != quote) {
        ++at_;
        return true;
      }
      if (peek() == quote) ++at_;
      token_.text += peek();
    }
    fail_unclosed(kind);
  }

  // E'...' and E"...": a backslash begins an escape; a quote is written behind one, or twice.
  bool scan_escaped(char quote, TokenKind kind) {
    token_.kind = kind;
    for (at_ += 2; !done();) {
      if (peek() == quote && peek(1) != quote) {
        ++at_;
        return true;
      }
      if (peek() == '\\') {
        scan_escape();
        continue;
      }
      token_.text += peek();
      at_ += peek() == quote ? 2 : 1;
    }
    fail_unclosed(kind);
  }

  void scan_escape() {
    static constexpr std::string_view letters = "ntr\\'\"0";
    static constexpr std::string_view meanings("\n\t\r\\'\"\0", 7);
    const std::size_t backslash = at_;
    const char letter = peek(1);
    at_ += 2;
    if (letter == 'x') {
      token_.text += static_cast<char>(scan_hex(2, backslash));
    } else if (letter == 'u') {
      append_utf8(&token_.text, scan_hex(4, backslash));
    } else if (const auto index = letters.find(letter);
               letter != '\0' && index != std::string_view::npos) {
      token_.text += meanings[index];
    } else {
      fail_escape(backslash);
    }
    // Neither the HDF5 library nor the host has such names: they would end there.
    if (token_.kind == TokenKind::quoted_name && token_.text.back() == '\0')
      throw StatementError::at(backslash + 1, "Expected no null byte in a name");
  }

  [[noreturn]] static void fail_escape(std::size_t backslash) {
    throw StatementError::at(backslash + 1,
                             R"(Expected one of the escapes \n \t \r \\ \' \" \0 \xHH \uXXXX)");
  }

  std::uint32_t scan_hex(int digits, std::size_t backslash) {
    std::uint32_t value = 0;
    for (int i = 0; i < digits; ++i, ++at_) {
      const int digit = hex_value(peek());
      if (digit < 0) fail_escape(backslash);
      value = value * 16 + static_cast<std::uint32_t>(digit);
    }
    return value;
  }

  bool scan_bytes() {
    token_.kind = TokenKind::bytes;
    for (at_ += 2; !done() && peek() != '\''; at_ += 2) {
      const int high = hex_value(peek());
      const int low = hex_value(peek(1));
      if (high < 0 || low < 0) {
        throw StatementError::at(at_ + 1, "Expected pairs of hexadecimal digits in X'...'");
      }
      token_.text += static_cast<char>(high * 16 + low);
    }
    if (done()) fail_unclosed("String of bytes");
    ++at_;
    return true;
  }

  void scan_word() {
    if (word_enders.find(peek()) != std::string_view::npos) return take_symbol(1);
    token_.kind = TokenKind::word;
    while (!done() && !is_blank(peek()) && word_enders.find(peek()) == std::string_view::npos) {
      if (token_.text.ends_with('/') && at_escaped('"')) return;
      token_.text += text_[at_++];
    }
  }

  void take_symbol(std::size_t length) {
    token_.kind = TokenKind::symbol;
    token_.text = text_.substr(at_, length);
    at_ += length;
  }

  void scan_expression_token() {
    static constexpr std::array<std::string_view, 22> symbols = {
        "...", "<=", ">=", "<>", "!=", "<", ">", "=", "+", "-", "*",
        "/",   "%",  ",",  "(",  ")",  "[", "]", ":", "@", "{", "}"};
    if (is_digit(peek()) || (peek() == '.' && is_digit(peek(1)))) return scan_number();
    if (is_identifier_start(peek())) {
      token_.kind = TokenKind::word;
      while (!done() && is_identifier_part(peek())) token_.text += text_[at_++];
      return;
    }
    for (const std::string_view symbol : symbols) {
      if (text_.substr(at_, symbol.size()) == symbol) return take_symbol(symbol.size());
    }
    throw StatementError::at(at_ + 1, "Expected a name, a value or an operator, found " +
                                          quoted(std::string(1, peek())));
  }

  void scan_number() {
    token_.kind = TokenKind::number;
    const std::size_t begin = at_;
    if (peek() == '0' && (peek(1) == 'x' || peek(1) == 'X')) {
      at_ += 2;
      while (hex_value(peek()) >= 0) ++at_;
    } else {
      scan_decimal();
    }
    token_.text = text_.substr(begin, at_ - begin);
    const bool bare_prefix =
        token_.text.size() == 2 && (token_.text[1] == 'x' || token_.text[1] == 'X');
    if (bare_prefix || (!done() && is_identifier_start(peek()))) {
      throw StatementError::at(begin + 1, "Expected a number, found " + quoted(number_like(begin)));
    }
  }

  void scan_decimal() {
    while (is_digit(peek())) ++at_;
    // "1..." in a slice would be a number and an ellipsis.
    if (peek() == '.' && peek(1) != '.') ++at_;
    while (is_digit(peek())) ++at_;
    const std::size_t sign = peek(1) == '+' || peek(1) == '-' ? 1 : 0;
    if ((peek() == 'e' || peek() == 'E') && is_digit(peek(1 + sign))) {
      at_ += 1 + sign;
      while (is_digit(peek())) ++at_;
    }
  }

  [[nodiscard]] std::string number_like(std::size_t begin) const {
    std::size_t end = at_;
    while (end < text_.size() && is_identifier_part(text_[end])) ++end;
    return std::string(text_.substr(begin, end - begin));
  }

  std::string_view text_;
  std::size_t at_;
  Token token_;
};

}  // namespace

std::string to_upper(std::string_view text) {
  std::string upper(text);
  for (char& byte : upper) {
    if (byte >= 'a' && byte <= 'z') byte = static_cast<char>(byte - 'a' + 'A');
  }
  return upper;
}

bool Token::is_keyword(std::string_view keyword) const {
  return kind == TokenKind::word && text.size() == keyword.size() && to_upper(text) == keyword;
}

Token scan_token(std::string_view statement, std::size_t offset, Mode mode) {
  return Scanner(statement, offset).scan(mode);
}

std::string describe(const Token& token, std::string_view statement) {
  if (token.kind == TokenKind::end) return "the end of the statement";
  return quoted(std::string(statement.substr(token.position - 1, token.next - token.position + 1)));
}

}  // namespace kelvo
