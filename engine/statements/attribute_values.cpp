// Reading attributes for a condition.
#include "statements/attribute_values.h"

#include <algorithm>

#include "error.h"
#include "storage/attribute.h"

namespace kelvo {
namespace {

Selection first_element(const Space& space) {
  Selection first;
  first.start.assign(space.extents.size(), 0);
  first.stride.assign(space.extents.size(), 1);
  first.count.assign(space.extents.size(), 1);
  return first;
}

}  // namespace

std::optional<NamedValue> AttributeValues::find(const std::string& name) {
  auto value = std::find_if(values_.begin(), values_.end(),
                            [&name](const Value& one) { return one.name == name; });
  if (value == values_.end()) {
    value = values_.emplace(values_.end());
    value->name = name;
    read(&*value);
  }
  if (value->block.count() == 0) return std::nullopt;
  return NamedValue{&value->place.type, value->block.data()};
}

void AttributeValues::read(Value* value) const {
  std::optional<AttributeHandle> attribute = find_attribute(group_, object_, value->name);
  if (!attribute) return;
  value->place =
      place_of(std::move(*attribute), "Attribute " + quoted(object_ + "@" + value->name));
  if (value->place.space.elements() == 0) return;
  value->reader.emplace(value->place, first_element(value->place.space));
  value->reader->next(value->block);
}

}  // namespace kelvo
