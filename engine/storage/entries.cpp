// Reading links and attributes in the HDF5 library's own order, and sorting them here.
//
// For any other order the library fills a table first. Where damage stops it half-way, it frees the
// whole table, the entries that it never filled included, which may end the process. Its own order
// goes without a table, except for the few links or attributes that lie in an object's header: so
// these are all looked at before, by asking for a name that is not among them.
#include "storage/entries.h"

#include <algorithm>
#include <new>

namespace kelvo {
namespace {

constexpr const char* name_of_nothing = "\x7f\x01\x7f";

// Exceptions must not pass through the HDF5 library: -1 stops the iteration.
template <typename Info>
herr_t add_entry(const char* name, H5L_type_t type, const Info* info, void* entries) noexcept {
  try {
    static_cast<std::vector<Entry>*>(entries)->push_back(
        {name, type, info->corder_valid != 0, static_cast<std::int64_t>(info->corder)});
    return 0;
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

herr_t add_link(hid_t /*group*/, const char* name, const H5L_info_t* info, void* entries) noexcept {
  return add_entry(name, info->type, info, entries);
}

herr_t add_attribute(hid_t /*object*/, const char* name, const H5A_info_t* info,
                     void* entries) noexcept {
  return add_entry(name, H5L_TYPE_HARD, info, entries);
}

void sort_by_name(std::vector<Entry>* entries) {
  const auto before = [](const Entry& left, const Entry& right) { return left.name < right.name; };
  // Groups of the older kind come sorted.
  if (!std::is_sorted(entries->begin(), entries->end(), before))
    std::sort(entries->begin(), entries->end(), before);
}

}  // namespace

herr_t read_links(hid_t group, std::vector<Entry>* entries) {
  if (H5Lexists(group, name_of_nothing, H5P_DEFAULT) < 0) return -1;
  const herr_t done = H5Literate(group, H5_INDEX_NAME, H5_ITER_NATIVE, nullptr, add_link, entries);
  sort_by_name(entries);
  return done;
}

herr_t read_attributes(hid_t object, std::vector<Entry>* entries) {
  if (H5Aexists(object, name_of_nothing) < 0) return -1;
  const herr_t done =
      H5Aiterate2(object, H5_INDEX_NAME, H5_ITER_NATIVE, nullptr, add_attribute, entries);
  sort_by_name(entries);
  return done;
}

void sort_by_creation(std::vector<Entry>* entries) {
  const bool tracked = std::all_of(entries->begin(), entries->end(),
                                   [](const Entry& entry) { return entry.is_tracked; });
  if (!tracked) return;
  std::sort(entries->begin(), entries->end(),
            [](const Entry& left, const Entry& right) { return left.order < right.order; });
}

std::vector<std::string> names_of(std::vector<Entry> entries) {
  std::vector<std::string> names;
  names.reserve(entries.size());
  for (Entry& entry : entries) names.push_back(std::move(entry.name));
  return names;
}

}  // namespace kelvo
