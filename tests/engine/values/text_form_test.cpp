// The text of elements of compound types, made by a form.
#include "values/text_form.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

Type number(Kind kind, std::size_t size, bool is_signed = true) {
  Type type;
  type.kind = kind;
  type.size = type.file_size = size;
  type.is_signed = is_signed;
  return type;
}

Type fixed_text(std::size_t size) { return number(Kind::text, size); }

Type array_of(const Type& base, std::vector<std::uint64_t> extents) {
  Type type;
  type.kind = Kind::array;
  type.base = {base};
  type.extents = std::move(extents);
  type.size = base.size * static_cast<std::size_t>(type.array_length());
  return type;
}

Type compound_of(std::initializer_list<std::pair<std::string, Type>> members) {
  Type type;
  type.kind = Kind::compound;
  type.size = 0;
  for (const auto& [name, member] : members) {
    type.members.push_back({name, type.size, type.size, member});
    type.size += member.size;
  }
  return type;
}

// Elements of a type, put together value by value.
struct Element {
  std::vector<std::byte> bytes;

  template <typename... Values>
  explicit Element(Values... values) {
    (add(values), ...);
  }
  template <typename Value>
  void add(const Value& value) {
    const auto* begin = reinterpret_cast<const std::byte*>(&value);
    bytes.insert(bytes.end(), begin, begin + sizeof value);
  }
};

// In one of the ways that there are. Where a text has a limit both give the same.
std::string written(const Type& type, const Element& element, bool columns = false) {
  EXPECT_EQ(type.size, element.bytes.size());
  const TextForm form(type, columns);
  std::string text = "before ";
  form.append(element.bytes.data(), {}, &text);
  if (const std::optional<std::size_t> room = form.room()) {
    std::string other(*room, '#');
    other.resize(
        static_cast<std::size_t>(form.write(element.bytes.data(), other.data()) - other.data()));
    EXPECT_EQ(text, "before " + other);
  }
  return text;
}

const Type tiny = number(Kind::integer, 1);
const Type unsigned_short = number(Kind::integer, 2, false);
const Type plain_int = number(Kind::integer, 4);
const Type unsigned_long = number(Kind::integer, 8, false);
const Type single = number(Kind::real, 4);
const Type real = number(Kind::real, 8);
const Type pointer = number(Kind::varying_text, sizeof(char*));

TEST(TextForm, NumbersOfAllKinds) {
  const Type type =
      compound_of({{"a", tiny}, {"b", unsigned_short}, {"c", unsigned_long}, {"d", single}});
  EXPECT_EQ(
      "before {a: -128, b: 65535, c: 18446744073709551615, d: 0.1}",
      written(type, Element(std::int8_t{-128}, std::uint16_t{65535}, ~std::uint64_t{0}, 0.1F)));
}

TEST(TextForm, SpecialAndLongestNumbers) {
  const Type type = compound_of({{"x", real}, {"y", real}});
  EXPECT_EQ("before {x: -inf, y: nan}", written(type, Element(-HUGE_VAL, -std::nan(""))));
  EXPECT_EQ("before {x: -2.2250738585072014e-308, y: -1.7976931348623157e+308}",
            written(type, Element(-2.2250738585072014e-308, -1.7976931348623157e+308)));
}

TEST(TextForm, NamesAreQuotedWhereNeeded) {
  const Type type = compound_of({{"two words", tiny}, {"a\"b", tiny}});
  EXPECT_EQ(R"(before {"two words": 1, "a""b": 2})",
            written(type, Element(std::int8_t{1}, std::int8_t{2})));
}

TEST(TextForm, ConstantsLongerThanOnePiece) {
  const std::string name(100, 'n');
  const Type type = compound_of({{name, tiny}, {name + "m", tiny}});
  EXPECT_EQ("before {" + name + ": 1, " + name + "m: 2}",
            written(type, Element(std::int8_t{1}, std::int8_t{2})));
}

TEST(TextForm, ValuesWithoutLimitStandBetweenNumbers) {
  const std::string content(1000, 'x');
  const Type type = compound_of({{"a", tiny}, {"t", pointer}, {"b", tiny}, {"u", pointer}});
  const Element element(std::int8_t{1}, content.c_str(), std::int8_t{2},
                        static_cast<const char*>(nullptr));
  EXPECT_EQ("before {a: 1, t: '" + content + "', b: 2, u: NULL}", written(type, element));
}

TEST(TextForm, CompoundsAndArraysInsideEachOther) {
  const Type point = compound_of({{"x", tiny}, {"y", tiny}});
  const Type type =
      compound_of({{"p", point}, {"m", array_of(tiny, {2, 2})}, {"q", array_of(point, {1})}});
  const auto v = [](int value) { return static_cast<std::int8_t>(value); };
  EXPECT_EQ("before {p: {x: 1, y: 2}, m: [[3, 4], [5, 6]], q: [{x: 7, y: 8}]}",
            written(type, Element(v(1), v(2), v(3), v(4), v(5), v(6), v(7), v(8))));
}

TEST(TextForm, LongArraysToo) {
  const Type type = compound_of({{"l", array_of(tiny, {2, 33})}, {"z", tiny}});
  Element element;
  std::string line = "[0";
  for (int i = 1; i < 33; ++i) line += ", 0";
  for (int i = 0; i < 66; ++i) element.add(std::int8_t{0});
  element.add(std::int8_t{9});
  EXPECT_EQ("before {l: [" + line + "], " + line + "]], z: 9}", written(type, element));
}

TEST(TextForm, ColumnsStandAlone) {
  const Type type = compound_of(
      {{"a", plain_int}, {"t", fixed_text(3)}, {"c", compound_of({{"t", fixed_text(2)}})}});
  Element element(std::int32_t{-7});
  for (const char byte : {'i', 't', '\0', 'o', 'k'}) element.add(byte);
  EXPECT_EQ("before -7\tit\t{t: 'ok'}", written(type, element, /*columns=*/true));
}

TEST(TextForm, OnlyNumbersAndWhatStandsBetweenThemHaveALimit) {
  EXPECT_TRUE(TextForm(compound_of({{"a", tiny}, {"m", array_of(real, {2, 2})}}), false).room());
  EXPECT_FALSE(TextForm(compound_of({{"a", tiny}, {"t", pointer}}), false).room());
  EXPECT_FALSE(TextForm(compound_of({{"l", array_of(tiny, {65})}}), false).room());
}

TEST(TextForm, ValueThatIsNoCompound) {
  EXPECT_EQ("before [1, 2]", written(array_of(tiny, {2}), Element(std::int8_t{1}, std::int8_t{2})));
  EXPECT_EQ("before it's", written(pointer, Element("it's")));
}

}  // namespace
}  // namespace kelvo
