// Chooses the shortest way from type to type.
#include "values/convert.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "error.h"
#include "values/literal_of.h"

namespace kelvo {
namespace {

bool has_same_names(const Type& one, const Type& other) {
  return std::equal(
      one.names.begin(), one.names.end(), other.names.begin(), other.names.end(),
      [](const EnumName& a, const EnumName& b) { return a.name == b.name && a.bits == b.bits; });
}

bool lie_alike(const Type& from, const Type& to, MemberMatch match);

bool members_lie_alike(const Type& from, const Type& to, MemberMatch match) {
  return std::equal(from.members.begin(), from.members.end(), to.members.begin(), to.members.end(),
                    [match](const Member& a, const Member& b) {
                      return (match == MemberMatch::by_position || a.name == b.name) &&
                             a.offset == b.offset && lie_alike(a.type, b.type, match);
                    });
}

// Whether every element of `from`, byte for byte, is the element of `to` with the same value.
bool lie_alike(const Type& from, const Type& to, MemberMatch match) {
  if (from.kind != to.kind || from.size != to.size) return false;
  switch (from.kind) {
    case Kind::integer:
    case Kind::bit_field:
      return from.is_signed == to.is_signed && to.is_full_width();
    case Kind::real:
      return to.is_full_width();
    case Kind::time:
      return from.order == to.order;
    case Kind::text:
      return from.padding == to.padding;
    case Kind::varying_text:
    case Kind::opaque:
      return true;
    case Kind::enumeration:
      return from.order == to.order && from.is_signed == to.is_signed && has_same_names(from, to);
    case Kind::compound:
      return members_lie_alike(from, to, match);
    case Kind::array:
      return from.extents == to.extents && lie_alike(from.base[0], to.base[0], match);
    case Kind::sequence:
      return lie_alike(from.base[0], to.base[0], match);
    case Kind::object_reference:
    case Kind::region_reference:
      return false;
  }
  return false;
}

template <typename From, typename To>
bool fits(From value) {
  if constexpr (std::is_integral_v<From> && std::is_integral_v<To>) {
    return std::in_range<To>(value);
  } else if constexpr (std::is_integral_v<To>) {
    // The bounds are powers of two, which every real type holds exactly.
    const From end = std::ldexp(From{1}, std::numeric_limits<To>::digits);
    return value >= static_cast<From>(std::numeric_limits<To>::min()) && value < end &&
           value == std::floor(value);
  } else if constexpr (std::is_same_v<From, double> && std::is_same_v<To, float>) {
    // Half a step beyond the largest float, from where rounding gives an infinity.
    constexpr double end = 0x1.ffffffp+127;
    return !(std::fabs(value) >= end) || std::isinf(value);
  } else {
    return true;
  }
}

template <typename From, typename To>
std::size_t convert_numbers(const std::byte* from, std::size_t count, std::byte* to) {
  for (std::size_t i = 0; i < count; ++i) {
    From value;
    std::memcpy(&value, from + i * sizeof value, sizeof value);
    if (!fits<From, To>(value)) return i;
    // A signed byte is a number here, no character.
    const auto converted = static_cast<To>(value);  // NOLINT(bugprone-signed-char-misuse)
    std::memcpy(to + i * sizeof converted, &converted, sizeof converted);
  }
  return count;
}

// Calls `use` with a value of the type that numbers of `type` have in memory.
template <typename Result, typename Use>
Result with_number(const Type& type, Use use) {
  if (type.kind == Kind::real) return type.size == 4 ? use(float{}) : use(double{});
  const bool is_signed = type.kind == Kind::integer && type.is_signed;
  switch (type.size) {
    case 1:
      return is_signed ? use(std::int8_t{}) : use(std::uint8_t{});
    case 2:
      return is_signed ? use(std::int16_t{}) : use(std::uint16_t{});
    case 4:
      return is_signed ? use(std::int32_t{}) : use(std::uint32_t{});
    default:
      return is_signed ? use(std::int64_t{}) : use(std::uint64_t{});
  }
}

bool is_machine_number(const Type& type) { return type.is_numeric() && type.kind != Kind::time; }

void name_members(const Type& type, Literal* literal) {
  if (type.kind == Kind::compound) {
    literal->kind = LiteralKind::object;
    for (std::size_t i = 0; i < type.members.size(); ++i) {
      literal->names.push_back(type.members[i].name);
      name_members(type.members[i].type, &literal->items[i]);
    }
  } else if (type.kind == Kind::array || type.kind == Kind::sequence) {
    for (Literal& item : literal->items) name_members(type.base[0], &item);
  }
}

}  // namespace

bool have_same_members(const Type& one, const Type& other) {
  if (one.kind != Kind::compound || other.kind != Kind::compound) return false;
  return std::is_permutation(one.members.begin(), one.members.end(), other.members.begin(),
                             other.members.end(),
                             [](const Member& a, const Member& b) { return a.name == b.name; });
}

Conversion::NumberLoop Conversion::number_loop(const Type& from, const Type& to) {
  if (!is_machine_number(from) || !is_machine_number(to) || !to.is_full_width()) return nullptr;
  return with_number<NumberLoop>(from, [&to](auto source) {
    return with_number<NumberLoop>(to, [](auto target) -> NumberLoop {
      return convert_numbers<decltype(source), decltype(target)>;
    });
  });
}

Conversion::Conversion(const Type& from, const Type& to, MemberMatch match, ReferenceNamer namer)
    : from_(from),
      match_(match),
      namer_(std::move(namer)),
      alike_(lie_alike(from, to, match)),
      loop_(number_loop(from, to)) {}

void Conversion::append(const std::byte* from, std::size_t count, EncodedElements* elements) {
  if (alike_) {
    elements->append_bytes(from, count);
  } else if (loop_ != nullptr) {
    append_numbers(from, count, elements);
  } else {
    for (std::size_t i = 0; i < count; ++i, ++done_)
      append_literal(from + i * from_.size, elements);
    return;
  }
  done_ += count;
}

void Conversion::append_numbers(const std::byte* from, std::size_t count,
                                EncodedElements* elements) {
  const std::size_t fitting = loop_(from, count, elements->append_room(count));
  if (fitting == count) return;
  // The literal's way refuses the same value, and says why.
  done_ += fitting;
  append_literal(from + fitting * from_.size, elements);
}

void Conversion::append_literal(const std::byte* element, EncodedElements* elements) {
  try {
    Literal literal = literal_of(from_, element, namer_);
    if (match_ == MemberMatch::by_name) name_members(from_, &literal);
    elements->append(literal);
  } catch (const StatementError& error) {
    throw StatementError(error.status(), "Element " + std::to_string(done_) + ": " + error.what());
  }
}

}  // namespace kelvo
