// The link class of external links.
#include "storage/external_link.h"

#include <hdf5.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>

#include "storage/check.h"
#include "storage/file.h"
#include "storage/object.h"
#include "storage/reach.h"
#include "storage/remote.h"

namespace kelvo {
namespace {

constexpr int deepest_chain = 16;

// External links that are being followed, one inside the other.
int depth = 0;

// In a remote file a name is an address beside its own; there is no other directory to be below.
std::string beside_address(const std::string& name, const Namer& namer,
                           const std::string& address) {
  const std::filesystem::path relative(name);
  const bool climbs = std::find(relative.begin(), relative.end(), "..") != relative.end();
  if (relative.is_absolute() || climbs || is_remote(name)) {
    throw StatementError(Status::host_refused,
                         namer.shown + " reaches for " + quoted(name) +
                             ", outside the directory of its remote file (USE FILE opens it by its "
                             "own name)");
  }
  return address.substr(0, address.rfind('/') + 1) + name;
}

std::string linked_file(const std::string& name, const Namer& namer, const std::string& from) {
  if (is_remote(from)) return beside_address(name, namer, from);
  if (is_remote(name)) {
    throw StatementError(Status::host_refused,
                         namer.shown + " reaches for " + quoted(name) +
                             ", outside the directory of its file (USE FILE opens it by its own "
                             "name)");
  }
  std::string found = find_named(name, namer, Fallback::none);
  if (!found.empty()) return found;
  throw StatementError(Status::does_not_exist,
                       namer.shown + " leads to file " + quoted(name) + ", which does not exist");
}

// A file that cannot be written is still good for reading what a link leads to.
FileHandle open_linked(const std::string& path, Access access) {
  if (access == Access::read) return open_file(path, Access::read, reach_options());
  try {
    return open_file(path, Access::write, reach_options());
  } catch (const StatementError&) {
    return open_file(path, Access::read, reach_options());
  }
}

hid_t open_target(const char* link, hid_t group, const void* value, std::size_t size) {
  unsigned flags = 0;
  const char* file = nullptr;
  const char* object = nullptr;
  check_done(H5Lunpack_elink_val(value, size, &flags, &file, &object),
             [] { return std::string("An external link cannot be read"); });
  const std::string parent = object_path(group);
  const Namer namer = namer_of(
      group, "External link " + quoted(parent + (parent.ends_with('/') ? "" : "/") + link));
  if (depth > deepest_chain) {
    throw StatementError(Status::hdf5_refused, namer.shown + " leads through more than " +
                                                   std::to_string(deepest_chain) +
                                                   " others, perhaps in a circle");
  }
  const FileHandle opened =
      open_linked(linked_file(file, namer, file_name(group)), access_of(group));
  const hid_t target = H5Oopen(opened.get(), object, H5P_DEFAULT);
  // Before the file is closed, which clears the error stack.
  if (target < 0) throw_left_error();
  return target;
}

// Called by the HDF5 library, which no exception may pass through.
hid_t follow(const char* link, hid_t group, const void* value, std::size_t size, hid_t /*access*/,
             hid_t /*transfer*/) noexcept {
  hid_t target = H5I_INVALID_HID;
  ++depth;
  try {
    target = open_target(link, group, value, size);
  } catch (const StatementError& error) {
    leave_error(error);
  } catch (const std::exception& error) {
    leave_error(StatementError(Status::no_memory, error.what()));
  }
  --depth;
  return target;
}

// What asking for the link's value gives: the bytes as they are stored.
ssize_t copy_value(const char* /*link*/, const void* value, std::size_t size, void* buffer,
                   std::size_t buffer_size) noexcept {
  if (buffer != nullptr) std::memcpy(buffer, value, std::min(size, buffer_size));
  return static_cast<ssize_t>(size);
}

}  // namespace

void forget_followed_links() noexcept { depth = 0; }

void guard_external_links() {
  H5L_class_t ours{};
  ours.version = H5L_LINK_CLASS_T_VERS;
  ours.id = H5L_TYPE_EXTERNAL;
  ours.comment = "external link";
  ours.trav_func = follow;
  ours.query_func = copy_value;
  check_done(H5Lregister(&ours), [] { return std::string("External links cannot be guarded"); });
}

}  // namespace kelvo
