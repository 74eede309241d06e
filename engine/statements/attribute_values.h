// The attributes of one object as the values of a condition: SHOW ... WHERE @units = 'K'.
#pragma once

#include <list>
#include <optional>
#include <string>

#include "query/compile.h"
#include "storage/element_io.h"

namespace kelvo {

/// Reads each attribute at most once, and only when it is asked for. What it gives is good while it
/// lives.
class AttributeValues {
 public:
  /// The object is found by its name relative to an open group.
  AttributeValues(hid_t group, std::string object) : group_(group), object_(std::move(object)) {}

  /// The first element of the attribute; nothing where there is none.
  std::optional<NamedValue> find(const std::string& name);

 private:
  struct Value {
    std::string name;
    ElementPlace place;
    std::optional<ElementReader> reader;
    ElementBlock block;  // behind the reader that it belongs to
  };

  void read(Value* value) const;

  hid_t group_;
  std::string object_;
  std::list<Value> values_;  // a list, since readers and blocks refer to what they are beside of
};

}  // namespace kelvo
