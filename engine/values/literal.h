// Values as they are written in a statement, before anyone knows what type they must fit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

enum class LiteralKind {
  integer,  // decimal or hexadecimal, with its sign
  real,     // with a fraction or an exponent, or too large for 64 bits; NAN, INF, -INF
  string,   // '...', E'...'
  bytes,    // X'...'
  word,     // TRUE, FALSE, NULL
  tuple,    // ( ..., ... ): the members of a compound, in their order
  object,   // { name: ..., ... }: the members of a compound by their names
  list,     // [ ..., ... ]: a sequence or an array
};

struct Literal {
  LiteralKind kind = LiteralKind::integer;
  std::size_t position = 1;        // of its first byte in the statement, from 1
  bool negative = false;           // integer
  std::uint64_t magnitude = 0;     // integer
  double real = 0;                 // real
  std::string text;                // string, bytes and word; numbers as written, for messages
  std::vector<Literal> items;      // tuple, object, list
  std::vector<std::string> names;  // object: of its items

  [[nodiscard]] bool is_number() const noexcept {
    return kind == LiteralKind::integer || kind == LiteralKind::real;
  }
  [[nodiscard]] bool is_text() const noexcept {
    return kind == LiteralKind::string || kind == LiteralKind::bytes;
  }
};

/// The literal as messages show it.
std::string describe(const Literal& literal);

}  // namespace kelvo
