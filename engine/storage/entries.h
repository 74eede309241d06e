// What a group or an object holds, read in one pass: its links, its attributes.
#pragma once

#include <hdf5.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

struct Entry {
  std::string name;
  H5L_type_t type = H5L_TYPE_HARD;  // of a link
  bool is_tracked = false;          // whether the order of creation is known
  std::int64_t order = 0;           // of creation, where it is
};

/// Appends the links of an open group, in name order. Negative where they cannot be read, as from
/// the HDF5 library.
herr_t read_links(hid_t group, std::vector<Entry>* entries);

/// Appends the attributes of an open object, in name order. Negative as above.
herr_t read_attributes(hid_t object, std::vector<Entry>* entries);

/// Puts them in the order of creation, where that is known of all.
void sort_by_creation(std::vector<Entry>* entries);

/// Their names, in their order.
std::vector<std::string> names_of(std::vector<Entry> entries);

}  // namespace kelvo
