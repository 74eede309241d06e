// How compounds and arrays are written, in one place: their values in order, and the text between
// them.
#pragma once

#include <cstddef>

#include "values/type.h"

namespace kelvo {

template <typename Visitor>
void walk_text(const Type& type, std::size_t offset, Visitor& visitor);

/// The part of an array from one dimension on. Each further dimension is a list of its own.
template <typename Visitor>
void walk_array(const Type& type, std::size_t dimension, std::size_t offset, Visitor& visitor) {
  const bool is_last = dimension + 1 == type.extents.size();
  std::size_t step = type.base[0].size;
  for (std::size_t d = dimension + 1; d < type.extents.size(); ++d)
    step *= static_cast<std::size_t>(type.extents[d]);
  visitor.add_constant("[");
  for (std::size_t i = 0; i < type.extents[dimension]; ++i) {
    if (i > 0) visitor.add_constant(", ");
    if (is_last) {
      walk_text(type.base[0], offset + i * step, visitor);
    } else {
      walk_array(type, dimension + 1, offset + i * step, visitor);
    }
  }
  visitor.add_constant("]");
}

/// Tells the visitor what the text of an element at `offset` is made of, in order: `add_constant`
/// is called for what is the same for every element, `add_value` for each value that stands for
/// itself. `is_value` may make one of a compound or an array.
template <typename Visitor>
void walk_text(const Type& type, std::size_t offset, Visitor& visitor) {
  const bool has_parts = type.kind == Kind::compound || type.kind == Kind::array;
  if (!has_parts || visitor.is_value(type)) return visitor.add_value(type, offset);
  if (type.kind == Kind::array) return walk_array(type, 0, offset, visitor);
  visitor.add_constant("{");
  for (const Member& member : type.members) {
    if (&member != type.members.data()) visitor.add_constant(", ");
    visitor.add_constant(written_name(member.name) + ": ");
    walk_text(member.type, offset + member.offset, visitor);
  }
  visitor.add_constant("}");
}

}  // namespace kelvo
