// The grammar of data types; that of numbers is in number_notation.cpp.
#include "language/type_notation.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "error.h"
#include "language/number_notation.h"
#include "language/parser.h"

namespace kelvo {
namespace {

constexpr std::uint64_t longest_fixed_size = 0x7fffffff;

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

Type parse_char(Parser& parser) {
  Type type;
  type.kind = Kind::text;
  type.size = type.file_size = expect_type_size(parser, "a number of bytes");
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
  type.size = type.file_size = expect_type_size(parser, "a number of bytes");
  if (parser.accept_keyword("TAG", Mode::expression)) type.tag = parser.expect_string("the tag");
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
  if (parser.accept_keyword("OF", Mode::expression)) {
    base = expect_integer_type(parser);
  } else {
    parse_byte_order(parser, &base);
  }
  check_enumeration(written, base);
  for (const WrittenEnumName& one : written) type.names.push_back(one.name);
  index_names(&type);
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
  const Parser::Nesting nesting(parser);
  Type type;
  if (accept_number_type(parser, &type)) return type;
  if (parser.accept_keyword("CHAR", mode)) return parse_char(parser);
  if (parser.accept_keyword("VARCHAR", mode)) return parse_varchar(parser);
  if (parser.accept_keyword("OPAQUE", mode)) return parse_opaque(parser);
  if (parser.accept_keyword("ENUMERATION", mode)) return parse_enumeration(parser);
  if (parser.accept_keyword("COMPOUND", mode)) return parse_compound(parser);
  if (parser.accept_keyword("ARRAY", mode)) return parse_array(parser);
  if (parser.accept_keyword("SEQUENCE", mode)) return parse_sequence(parser);
  if (parser.accept_keyword("REFERENCE", mode)) return reference(Kind::object_reference);
  if (parser.accept_clause("REGION REFERENCE", mode)) return reference(Kind::region_reference);
  parser.fail_expected("a data type (HELP DATA TYPE lists them)", mode);
}

}  // namespace kelvo
