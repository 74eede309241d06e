// How elements of one type are written as rows of text, worked out once: what is the same for all
// of them lies ready, and numbers are written straight to their places.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "values/text.h"
#include "values/type.h"

namespace kelvo {

class TextForm {
 public:
  /// As append_plain writes elements of the type, which must outlive the form; or with `columns`,
  /// for a compound: each member as append_plain writes it, and a tab between them.
  TextForm(const Type& type, bool columns);

  /// Bytes that must be free where `write` puts a text; nothing where texts have no limit.
  [[nodiscard]] std::optional<std::size_t> room() const;

  /// Writes the text of an element, where it has a limit, without a NUL, and returns the byte
  /// behind it. What is written behind that byte, within the room, is left undefined.
  char* write(const std::byte* element, char* text) const;

  void append(const std::byte* element, const ReferenceNamer& namer, std::string* text) const;

 private:
  friend class TextFormBuilder;

  // A value and the constant text before it.
  struct Step {
    std::size_t constant_size;
    NumberWriter write;  // null where the text has no limit
    const Type* type;    // null: no value, behind the last one
    std::size_t offset;
    bool is_plain;
  };

  static void append_value(const Step& step, const std::byte* element, const ReferenceNamer& namer,
                           std::string* text);

  std::vector<Step> steps_;
  std::string constants_;  // each filled up to whole pieces
  // What the constants and numbers take from the beginning on, and behind each value without limit.
  std::vector<std::size_t> rooms_;
};

}  // namespace kelvo
