// Copying objects and attributes, within a file and to another one. Values keep their types
// exactly. In another file, references lead to the copies of what they led to, and are null where
// that was not copied.
#pragma once

#include <string>

#include "storage/handle.h"
#include "values/storage_options.h"

namespace kelvo {

class ReferenceMap;

/// An object, or the place for one, that messages can name.
struct ObjectPlace {
  hid_t file;
  std::string path;
};

/// The group or dataset with its attributes, a group with all below it; links are copied as links.
/// `to` is creatable.
void copy_object(const ObjectPlace& from, const ObjectPlace& to);

/// The dataset with its attributes, stored as the source is but for what the options say: filters
/// replace all filters, another layout all of the layout.
void store_anew(const ObjectPlace& from, const ObjectPlace& to, const StorageOptions& options);

/// An attribute of an open object, or the place for one.
struct AttributePlace {
  hid_t object;
  std::string name;
  std::string shown;  // as messages show it: path@name
};

/// An attribute to an object that has none of that name.
void copy_attribute(const AttributePlace& from, const AttributePlace& to,
                    const ReferenceMap& references);

/// All attributes of one object to another one that has none of their names.
void copy_attributes(const ObjectPlace& from, const ObjectPlace& to,
                     const ReferenceMap& references);

}  // namespace kelvo
