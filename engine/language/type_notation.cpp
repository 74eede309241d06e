// The grammar of data types, as a table of type words.
#include "language/type_notation.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string_view>

#include "error.h"
#include "language/parser.h"

namespace kelvo {
namespace {

constexpr std::uint64_t longest_fixed_size = 0x7fffffff;
constexpr std::uint64_t longest_number_bits = 1 << 20;  // more than any, little enough to add up

struct TypeWord {
  std::string_view keyword;
  Kind kind;
  std::size_t size;  // in memory; 0: the notation says it
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

constexpr std::size_t sequence_size = sizeof(std::size_t) + sizeof(void*);

Type sequence_of(Type base) {
  Type type;
  type.kind = Kind::sequence;
  type.size = type.file_size = sequence_size;
  type.base = {std::move(base)};
  return type;
}

void parse_order(Parser& parser, Type* type) {
  if (parser.accept_keyword("LITTLE ENDIAN", Mode::expression)) type->order = ByteOrder::little;
  if (parser.accept_keyword("BIG ENDIAN", Mode::expression)) type->order = ByteOrder::big;
}

void parse_charset(Parser& parser, Type* type) {
  if (!parser.accept_keyword("CHARSET", Mode::expression)) return;
  if (parser.accept_keyword("ASCII", Mode::expression)) {
    type->charset = Charset::ascii;
  } else if (!parser.accept_keyword("UTF8", Mode::expression)) {
    parser.fail_expected("ASCII or UTF8", Mode::expression);
  }
}

void parse_padding(Parser& parser, Type* type) {
  static constexpr std::array<std::string_view, 3> words = {"NULLTERM", "NULLPAD", "SPACEPAD"};
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (parser.accept_keyword(words[i], Mode::expression)) type->padding = static_cast<Padding>(i);
  }
}

std::size_t parse_size(Parser& parser, std::string_view what) {
  parser.expect_symbol("(", Mode::expression);
  const std::uint64_t size = parser.expect_unsigned(what, longest_fixed_size);
  parser.expect_symbol(")", Mode::expression);
  if (size == 0)
    throw StatementError(Status::out_of_range, "The size of a type must be at least 1");
  return size;
}

std::optional<std::size_t> parse_number_clause(Parser& parser, std::string_view word) {
  if (!parser.accept_keyword(word, Mode::expression)) return std::nullopt;
  return parser.expect_unsigned("a number of bits or bytes", longest_number_bits);
}

// PRECISION bits, OFFSET bits: of a number that does not fill its bytes.
void parse_bits_in_use(Parser& parser, Type* type) {
  const std::size_t all = 8 * type->file_size;
  const std::size_t precision = parse_number_clause(parser, "PRECISION").value_or(all);
  type->bit_offset = parse_number_clause(parser, "OFFSET").value_or(0);
  const std::size_t least = type->is_signed ? 2 : 1;
  if (precision < least || precision > 64 || precision + type->bit_offset > all) {
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

bool parse_numeric(Parser& parser, Type* type) {
  const bool is_unsigned = parser.accept_keyword("UNSIGNED", Mode::expression);
  for (const TypeWord& word : numeric_words) {
    if (is_unsigned && !word.may_be_unsigned) continue;
    if (!parser.accept_keyword(word.keyword, Mode::expression)) continue;
    type->kind = word.kind;
    type->size = word.size;
    type->file_size = word.file_size;
    type->is_signed = !is_unsigned;
    if (type->kind == Kind::real && !standard_format(type->file_size))
      type->format = extended_format();
    if (type->kind == Kind::integer && !word.varying) parse_integer_layout(parser, type);
    parse_order(parser, type);
    if (word.varying) *type = sequence_of(*type);
    return true;
  }
  if (is_unsigned) parser.fail_expected("an integer type", Mode::expression);
  return false;
}

// BITFIELD(bits) and TIME(bits): kinds that files of others hold.
Type parse_bits(Parser& parser, Kind kind) {
  Type type;
  type.kind = kind;
  const std::size_t bits = parse_size(parser, "a number of bits");
  const bool possible = kind == Kind::time ? bits == 32 || bits == 64 : bits % 8 == 0 && bits <= 64;
  if (!possible) {
    throw StatementError(Status::out_of_range,
                         "No such type has " + std::to_string(bits) + " bits");
  }
  type.file_size = bits / 8;
  type.size = integer_size_in_memory(type.file_size);
  type.is_signed = kind == Kind::time;
  if (kind == Kind::bit_field) parse_bits_in_use(parser, &type);
  parse_order(parser, &type);
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
  type.file_size = parse_size(parser, "a number of bytes");
  const RealFormat format = parse_real_format(parser);
  if (format != standard_format(type.file_size)) type.format = format;
  type.size = fits_single(format) && type.file_size <= 4 ? 4 : 8;
  parse_order(parser, &type);
  return type;
}

Type parse_char(Parser& parser) {
  Type type;
  type.kind = Kind::text;
  type.size = type.file_size = parse_size(parser, "a number of bytes");
  parse_padding(parser, &type);
  parse_charset(parser, &type);
  return type;
}

Type parse_varchar(Parser& parser) {
  Type type;
  type.kind = Kind::varying_text;
  type.size = type.file_size = sizeof(char*);
  type.padding = Padding::null_terminated;
  parse_padding(parser, &type);
  parse_charset(parser, &type);
  return type;
}

Type parse_opaque(Parser& parser) {
  Type type;
  type.kind = Kind::opaque;
  type.size = type.file_size = parse_size(parser, "a number of bytes");
  if (parser.accept_keyword("TAG", Mode::expression))
    type.tag = parser.expect_string("the tag, a string");
  return type;
}

std::string parse_name(Parser& parser, std::string_view what) {
  const TokenKind kind = parser.peek(Mode::expression).kind;
  if (kind != TokenKind::word && kind != TokenKind::quoted_name)
    parser.fail_expected(what, Mode::expression);
  return parser.take(Mode::expression).text;
}

bool fits(std::uint64_t bits, bool negative, const Type& base) {
  const auto unsigned_maximum =
      std::numeric_limits<std::uint64_t>::max() >> (64 - base.value_bits());
  if (!base.is_signed) return !negative && bits <= unsigned_maximum;
  const std::uint64_t signed_maximum = unsigned_maximum >> 1U;
  return negative ? ~bits + 1 <= signed_maximum + 1 : bits <= signed_maximum;
}

struct WrittenEnumName {
  EnumName name;
  bool negative = false;
};

WrittenEnumName parse_enum_name(Parser& parser, const WrittenEnumName* previous) {
  WrittenEnumName written;
  written.name.name = parse_name(parser, "the name of a value");
  if (parser.accept_symbol("=", Mode::expression)) {
    written.negative = parser.accept_symbol("-", Mode::expression);
    written.name.bits = parser.expect_unsigned("an integer");
    if (written.negative) written.name.bits = ~written.name.bits + 1;
    written.negative = written.negative && written.name.bits != 0;
  } else if (previous != nullptr) {
    written.name.bits = previous->name.bits + 1;
    written.negative = previous->negative && written.name.bits != 0;
  }
  return written;
}

void check_enumeration(const std::vector<WrittenEnumName>& written, const Type& base) {
  for (const WrittenEnumName& one : written) {
    if (!fits(one.name.bits, one.negative, base)) {
      throw StatementError(Status::out_of_range, "Value of " + quoted(one.name.name) +
                                                     " does not fit " + type_name(base));
    }
    const auto same =
        std::count_if(written.begin(), written.end(), [&one](const WrittenEnumName& other) {
          return other.name.name == one.name.name || other.name.bits == one.name.bits;
        });
    if (same > 1) {
      throw StatementError(Status::out_of_range, "Name or value of " + quoted(one.name.name) +
                                                     " stands twice in the enumeration");
    }
  }
}

Type parse_enumeration(Parser& parser) {
  Type type;
  type.kind = Kind::enumeration;
  std::vector<WrittenEnumName> written;
  parser.expect_symbol("(", Mode::expression);
  do {
    written.push_back(parse_enum_name(parser, written.empty() ? nullptr : &written.back()));
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol(")", Mode::expression);
  Type base;
  if (parser.accept_keyword("OF", Mode::expression) &&
      (!parse_numeric(parser, &base) || base.kind != Kind::integer)) {
    parser.fail_expected("an integer type", Mode::expression);
  }
  parse_order(parser, &base);
  check_enumeration(written, base);
  for (const WrittenEnumName& one : written) type.names.push_back(one.name);
  type.size = base.size;
  type.file_size = base.file_size;
  type.is_signed = base.is_signed;
  type.order = base.order;
  type.base = {base};
  return type;
}

std::vector<std::uint64_t> parse_extents(Parser& parser) {
  std::vector<std::uint64_t> extents;
  do {
    const std::uint64_t extent = parser.expect_unsigned("an extent", longest_fixed_size);
    if (extent == 0)
      throw StatementError(Status::out_of_range, "An extent of an array must be at least 1");
    extents.push_back(extent);
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol("]", Mode::expression);
  return extents;
}

Type array_of(Type base, std::vector<std::uint64_t> extents) {
  Type type;
  type.kind = Kind::array;
  type.extents = std::move(extents);
  std::uint64_t size = base.size;
  for (const std::uint64_t extent : type.extents) {
    size *= extent;
    if (size > longest_fixed_size)
      throw StatementError(Status::out_of_range, "The array is too large for one element");
  }
  type.size = static_cast<std::size_t>(size);
  type.file_size = base.file_size * static_cast<std::size_t>(type.array_length());
  type.base = {std::move(base)};
  return type;
}

Type parse_array(Parser& parser) {
  parser.expect_symbol("[", Mode::expression);
  std::vector<std::uint64_t> extents = parse_extents(parser);
  parser.expect_keyword("OF", Mode::expression);
  return array_of(parse_type(parser), std::move(extents));
}

Type parse_sequence(Parser& parser) {
  parser.expect_keyword("OF", Mode::expression);
  return sequence_of(parse_type(parser));
}

Member parse_member(Parser& parser) {
  Member member;
  member.name = parse_name(parser, "the name of a member");
  member.type = parse_type(parser);
  if (parser.accept_symbol("[", Mode::expression)) {
    member.type = array_of(std::move(member.type), parse_extents(parser));
  }
  return member;
}

Type parse_compound(Parser& parser) {
  Type type;
  type.kind = Kind::compound;
  type.size = type.file_size = 0;
  parser.expect_symbol("(", Mode::expression);
  do {
    Member member = parse_member(parser);
    const bool twice =
        std::any_of(type.members.begin(), type.members.end(),
                    [&member](const Member& other) { return other.name == member.name; });
    if (twice) {
      throw StatementError(Status::out_of_range,
                           "Member " + quoted(member.name) + " stands twice in the compound");
    }
    member.offset = type.size;
    member.file_offset = type.file_size;
    type.size += member.type.size;
    type.file_size += member.type.file_size;
    type.members.push_back(std::move(member));
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol(")", Mode::expression);
  return type;
}

Type reference(Kind kind) {
  Type type;
  type.kind = kind;
  type.size = type.file_size = kind == Kind::object_reference ? 8 : 12;
  return type;
}

}  // namespace

Type parse_type(Parser& parser) {
  constexpr Mode mode = Mode::expression;
  Type type;
  if (parse_numeric(parser, &type)) return type;
  if (parser.accept_keyword("CHAR", mode)) return parse_char(parser);
  if (parser.accept_keyword("VARCHAR", mode)) return parse_varchar(parser);
  if (parser.accept_keyword("OPAQUE", mode)) return parse_opaque(parser);
  if (parser.accept_keyword("ENUMERATION", mode)) return parse_enumeration(parser);
  if (parser.accept_keyword("COMPOUND", mode)) return parse_compound(parser);
  if (parser.accept_keyword("ARRAY", mode)) return parse_array(parser);
  if (parser.accept_keyword("SEQUENCE", mode)) return parse_sequence(parser);
  if (parser.accept_keyword("REAL", mode)) return parse_real(parser);
  if (parser.accept_keyword("BITFIELD", mode)) return parse_bits(parser, Kind::bit_field);
  if (parser.accept_keyword("TIME", mode)) return parse_bits(parser, Kind::time);
  if (parser.accept_keyword("REFERENCE", mode)) return reference(Kind::object_reference);
  if (parser.accept_keyword("REGION REFERENCE", mode)) return reference(Kind::region_reference);
  parser.fail_expected("a data type", mode);
}

}  // namespace kelvo
