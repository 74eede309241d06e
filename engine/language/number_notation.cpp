// Reads the types of numbers, by a table of their words.
#include "language/number_notation.h"

#include <array>
#include <optional>
#include <utility>

#include "error.h"
#include "language/parser.h"

namespace kelvo {
namespace {

constexpr std::uint64_t longest_number_bits = 1 << 20;  // more than any, little enough to add up

struct TypeWord {
  std::string_view keyword;
  Kind kind;
  std::size_t size;  // in memory
  std::size_t file_size;
  bool may_be_unsigned;
  bool varying;  // VARINT and its kin: a sequence of it
};

constexpr std::array<TypeWord, 14> numeric_words = {{
    {"TINYINT", Kind::integer, 1, 1, true, false},
    {"SMALLINT", Kind::integer, 2, 2, true, false},
    {"INT", Kind::integer, 4, 4, true, false},
    {"BIGINT", Kind::integer, 8, 8, true, false},
    {"HALF", Kind::real, 4, 2, false, false},
    {"FLOAT", Kind::real, 4, 4, false, false},
    {"DOUBLE", Kind::real, 8, 8, false, false},
    {"LONG DOUBLE", Kind::real, 8, 16, false, false},
    {"VARTINYINT", Kind::integer, 1, 1, true, true},
    {"VARSMALLINT", Kind::integer, 2, 2, true, true},
    {"VARINT", Kind::integer, 4, 4, true, true},
    {"VARBIGINT", Kind::integer, 8, 8, true, true},
    {"VARFLOAT", Kind::real, 4, 4, false, true},
    {"VARDOUBLE", Kind::real, 8, 8, false, true},
}};

std::optional<std::size_t> parse_number_clause(Parser& parser, std::string_view word) {
  if (!parser.accept_keyword(word, Mode::expression)) return std::nullopt;
  return parser.expect_unsigned("a number of bits or bytes", longest_number_bits);
}

// PRECISION bits, OFFSET bits: of a number that does not fill its bytes.
void parse_bits_in_use(Parser& parser, Type* type) {
  const std::size_t all = 8 * type->file_size;
  const std::size_t precision = parse_number_clause(parser, "PRECISION").value_or(all);
  type->bit_offset = parse_number_clause(parser, "OFFSET").value_or(0);
  if (precision < 1 || precision > 64 || precision + type->bit_offset > all) {
    throw StatementError(Status::out_of_range, "An integer of " + std::to_string(type->file_size) +
                                                   " bytes cannot have " +
                                                   std::to_string(precision) + " bits at offset " +
                                                   std::to_string(type->bit_offset));
  }
  type->precision = precision == all ? 0 : precision;
}

// SIZE bytes: integers of a width that the machine has no own for are read as the next wider ones.
void parse_integer_layout(Parser& parser, Type* type) {
  const std::size_t file_size = parse_number_clause(parser, "SIZE").value_or(type->size);
  if (integer_size_in_memory(file_size) != type->size) {
    throw StatementError(Status::out_of_range,
                         type_name(*type) + " cannot have the size " + std::to_string(file_size));
  }
  type->file_size = file_size;
  parse_bits_in_use(parser, type);
}

// The word's own type, with all that may stand behind it.
Type parse_after(const TypeWord& word, bool is_unsigned, Parser& parser) {
  Type type;
  type.kind = word.kind;
  type.size = word.size;
  type.file_size = word.file_size;
  type.is_signed = !is_unsigned;
  if (type.kind == Kind::real && !standard_format(type.file_size)) type.format = extended_format();
  if (type.kind == Kind::integer && !word.varying) parse_integer_layout(parser, &type);
  parse_byte_order(parser, &type);
  return word.varying ? sequence_of(std::move(type)) : type;
}

bool accept_word_type(Parser& parser, Type* type) {
  const bool is_unsigned = parser.accept_keyword("UNSIGNED", Mode::expression);
  for (const TypeWord& word : numeric_words) {
    if (is_unsigned && !word.may_be_unsigned) continue;
    if (!parser.accept_keyword(word.keyword, Mode::expression)) continue;
    *type = parse_after(word, is_unsigned, parser);
    if (word.may_be_unsigned && parser.peek(Mode::expression).is_keyword("UNSIGNED"))
      parser.fail_expected("UNSIGNED in front of the type", Mode::expression);
    return true;
  }
  if (is_unsigned) parser.fail_expected("an integer type", Mode::expression);
  return false;
}

// BITFIELD(bits) and TIME(bits): kinds that files of others hold.
Type parse_bits(Parser& parser, Kind kind) {
  Type type;
  type.kind = kind;
  const std::size_t bits = expect_type_size(parser, "a number of bits");
  const bool possible = kind == Kind::time ? bits == 32 || bits == 64 : bits % 8 == 0 && bits <= 64;
  if (!possible) {
    throw StatementError(Status::out_of_range,
                         "No such type has " + std::to_string(bits) + " bits");
  }
  type.file_size = bits / 8;
  type.size = integer_size_in_memory(type.file_size);
  type.is_signed = kind == Kind::time;
  if (kind == Kind::bit_field) parse_bits_in_use(parser, &type);
  parse_byte_order(parser, &type);
  return type;
}

std::size_t expect_number_clause(Parser& parser, std::string_view word) {
  const std::optional<std::size_t> number = parse_number_clause(parser, word);
  if (!number) parser.fail_expected(word, Mode::expression);
  return *number;
}

Normalization parse_normalization(Parser& parser) {
  parser.expect_keyword("NORMALIZATION", Mode::expression);
  for (const Normalization one :
       {Normalization::implied, Normalization::set, Normalization::none}) {
    if (parser.accept_keyword(normalization_word(one), Mode::expression)) return one;
  }
  parser.fail_expected("IMPLIED, SET or NONE", Mode::expression);
}

RealFormat parse_real_format(Parser& parser) {
  RealFormat format;
  format.precision = expect_number_clause(parser, "PRECISION");
  format.offset = expect_number_clause(parser, "OFFSET");
  format.sign_at = expect_number_clause(parser, "SIGN");
  format.exponent_at = expect_number_clause(parser, "EXPONENT");
  format.exponent_size = expect_number_clause(parser, "SIZE");
  format.bias = expect_number_clause(parser, "BIAS");
  format.mantissa_at = expect_number_clause(parser, "MANTISSA");
  format.mantissa_size = expect_number_clause(parser, "SIZE");
  format.normalization = parse_normalization(parser);
  return format;
}

// REAL(bytes) and where everything in it lies: formats of other machines. Whether the parts fit
// together is the HDF5 library's to say, when the type is made.
Type parse_real(Parser& parser) {
  Type type;
  type.kind = Kind::real;
  type.file_size = expect_type_size(parser, "a number of bytes");
  const RealFormat format = parse_real_format(parser);
  if (format != standard_format(type.file_size)) type.format = format;
  type.size = fits_single(format) && type.file_size <= 4 ? 4 : 8;
  parse_byte_order(parser, &type);
  return type;
}

}  // namespace

void parse_byte_order(Parser& parser, Type* type) {
  if (parser.accept_clause("LITTLE ENDIAN", Mode::expression)) type->order = ByteOrder::little;
  if (parser.accept_clause("BIG ENDIAN", Mode::expression)) type->order = ByteOrder::big;
}

std::size_t expect_type_size(Parser& parser, std::string_view what) {
  parser.expect_symbol("(", Mode::expression);
  const std::uint64_t size = parser.expect_unsigned(what, 0x7fffffff);
  parser.expect_symbol(")", Mode::expression);
  if (size == 0)
    throw StatementError(Status::out_of_range, "The size of a type must be at least 1");
  return static_cast<std::size_t>(size);
}

Type sequence_of(Type base) {
  Type type;
  type.kind = Kind::sequence;
  type.size = type.file_size = sizeof(std::size_t) + sizeof(void*);
  type.base = {std::move(base)};
  return type;
}

bool accept_number_type(Parser& parser, Type* type) {
  if (accept_word_type(parser, type)) return true;
  if (parser.accept_keyword("REAL", Mode::expression)) {
    *type = parse_real(parser);
  } else if (parser.accept_keyword("BITFIELD", Mode::expression)) {
    *type = parse_bits(parser, Kind::bit_field);
  } else if (parser.accept_keyword("TIME", Mode::expression)) {
    *type = parse_bits(parser, Kind::time);
  } else {
    return false;
  }
  return true;
}

Type expect_integer_type(Parser& parser) {
  const bool is_unsigned = parser.accept_keyword("UNSIGNED", Mode::expression);
  for (const TypeWord& word : numeric_words) {
    if (word.kind != Kind::integer || word.varying) continue;
    if (parser.accept_keyword(word.keyword, Mode::expression))
      return parse_after(word, is_unsigned, parser);
  }
  parser.fail_expected("an integer type", Mode::expression);
}

}  // namespace kelvo
