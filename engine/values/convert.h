// Elements of one type made into elements of another, with every check of INSERT. Where both lie
// alike in memory they are copied; numbers are converted in loops; all else goes by literals.
#pragma once

#include <cstddef>
#include <cstdint>

#include "values/encoded_elements.h"
#include "values/text.h"
#include "values/type.h"

namespace kelvo {

/// How the members of compounds find each other.
enum class MemberMatch { by_name, by_position };

class Conversion {
 public:
  /// References become the path that `namer` gives. Both types must outlive the conversion.
  Conversion(const Type& from, const Type& to, MemberMatch match, ReferenceNamer namer);

  /// Appends the elements. Throws StatementError: "Element 17: Value 300 does not fit TINYINT",
  /// counted from 0 over all calls. What varying parts point to must outlive those of `elements`.
  void append(const std::byte* from, std::size_t count, EncodedElements* elements);

 private:
  /// Converts up to `count` numbers; returns how many did fit before the first that does not.
  using NumberLoop = std::size_t (*)(const std::byte* from, std::size_t count, std::byte* to);

  static NumberLoop number_loop(const Type& from, const Type& to);
  void append_literal(const std::byte* element, EncodedElements* elements);
  void append_numbers(const std::byte* from, std::size_t count, EncodedElements* elements);

  const Type& from_;
  MemberMatch match_;
  ReferenceNamer namer_;
  bool alike_;
  NumberLoop loop_;  // null where there is none
  std::uint64_t done_ = 0;
};

/// Whether both are compounds with members of the same names, in any order.
bool have_same_members(const Type& one, const Type& other);

}  // namespace kelvo
