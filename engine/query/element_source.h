// What a query selects, as elements in memory: the source of rows, of exported files and of what
// INSERT writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "values/space.h"
#include "values/text.h"
#include "values/type.h"

namespace kelvo {

/// Elements side by side, laid out as their source's type says.
struct Elements {
  const std::byte* data = nullptr;
  std::size_t count = 0;
  /// What holds exactly these bytes, where the taker may swap others into it; else null.
  std::vector<std::byte>* movable = nullptr;
};

class ElementSource {
 public:
  ElementSource() = default;
  ElementSource(const ElementSource&) = delete;
  ElementSource& operator=(const ElementSource&) = delete;
  virtual ~ElementSource() = default;

  /// What the elements are. A query of several items gives a compound with a member for each,
  /// without holes between them.
  [[nodiscard]] virtual const Type& type() const = 0;

  /// The next elements, at least one; false when there are none left. They, and what their varying
  /// parts point to, are good until the next call. Throws StatementError; it is not called again
  /// then.
  virtual bool next(Elements& elements) = 0;

  /// Where all that is selected has to be read before the first element can be given: reads it, and
  /// gives the number of elements that there will be. Else nothing, and nothing is read.
  virtual std::optional<std::uint64_t> read_all() { return std::nullopt; }

  /// Whether the elements are copied from a file as they lie there, so that reading them again
  /// costs less than keeping them.
  [[nodiscard]] virtual bool is_plain() const { return false; }

  /// Goes back to the first element. For plain sources only.
  virtual void rewind() {}
};

/// Has happen what can fail before the first element is given: the source reads all, where it has
/// to, or a plain one that many bytes, and is rewound. How many elements these were; nothing, and
/// nothing is read, where the source is neither.
std::optional<std::uint64_t> look_through(ElementSource& source, std::size_t most_bytes);

/// A query that has been checked and is ready to be read.
struct Selected {
  std::unique_ptr<ElementSource> source;
  bool several_items = false;  // then the members are columns, not one compound value
  std::string label;           // of the only item: its column's name
  /// The extents of the result, where it has the shape of what it is taken from; else its elements
  /// are one row each.
  std::optional<std::vector<Extent>> shape;
  ReferenceNamer namer;
};

}  // namespace kelvo
