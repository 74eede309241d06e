// Reading attributes for a condition.
#include "statements/attribute_values.h"

#include <algorithm>

#include "storage/check.h"

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
  const auto what = [this, value] {
    return "Attribute " + quoted(object_ + "@" + value->name) + " cannot be read";
  };
  // A link that leads nowhere has no attributes either.
  if (H5Oexists_by_name(group_, object_.c_str(), H5P_DEFAULT) <= 0) return;
  const char* name = value->name.c_str();
  if (!check_answer(H5Aexists_by_name(group_, object_.c_str(), name, H5P_DEFAULT), what)) return;
  AttributeHandle attribute(
      check_id(H5Aopen_by_name(group_, object_.c_str(), name, H5P_DEFAULT, H5P_DEFAULT), what));
  value->place = place_of(std::move(attribute), "Attribute " + quoted(object_ + "@" + value->name));
  if (value->place.space.elements() == 0) return;
  value->reader.emplace(value->place, first_element(value->place.space));
  value->reader->next(value->block);
}

}  // namespace kelvo
