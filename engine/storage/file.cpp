// Opening and making HDF5 files.
#include "storage/file.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "storage/check.h"
#include "storage/driver.h"
#include "storage/family.h"
#include "storage/file_causes.h"
#include "storage/free_space.h"
#include "storage/lock.h"
#include "storage/remote.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

std::string cannot_set_up() { return "File access cannot be set up"; }

PropertyHandle file_access(const FileOptions& options) {
  PropertyHandle list(check_id(H5Pcreate(H5P_FILE_ACCESS), cannot_set_up));
  // The library's own choice when it opens a virtual dataset's source: with any other it could not
  // share a file with us, and would take that for a source that is not there.
  check_done(H5Pset_fclose_degree(list.get(), H5F_CLOSE_WEAK), cannot_set_up);
  check_done(H5Pset_libver_bounds(list.get(), options.low.version, options.high.version),
             cannot_set_up);
  return list;
}

// With the directory as it really is, so that what the file names is looked for beside the file
// itself, not beside a symbolic link to it.
std::string real_path(const std::string& path) {
  std::error_code error;
  const fs::path real = fs::canonical(path, error);
  return error ? path : real.string();
}

// Opens a family by its pattern, and what is wrong with it shows in its first member.
FileHandle open_family(const std::string& path, Access access, hid_t list) {
  const unsigned flags = access == Access::read ? H5F_ACC_RDONLY : H5F_ACC_RDWR;
  set_family_driver(list);
  const fs::path directory = real_path(fs::path(path).parent_path().string());
  const std::string real = (directory / fs::path(path).filename()).string();
  if (access == Access::write && is_locked(family_member(path, 0))) fail_locked(path);
  FileHandle file(H5Fopen(family_format(real).c_str(), flags, list));
  if (!file) fail_open(path, family_member(path, 0));
  if (access == Access::write && !lock_open_file(file.get())) fail_locked(path);
  return file;
}

bool remembers_free_space_of(hid_t file) {
  const PropertyHandle creation(check_id(H5Fget_create_plist(file), cannot_set_up));
  return remembers_free_space(creation.get());
}

FileHandle open_for_writing(const std::string& path, const std::string& real, hid_t list) {
  FileHandle file(H5Fopen(real.c_str(), H5F_ACC_RDWR, list));
  if (!file) fail_open(path, path);
  if (!lock_open_file(file.get())) fail_locked(path);
  return file;
}

FileHandle open_host_file(const std::string& path, Access access, hid_t list) {
  const std::string real = real_path(path);
  set_driver(list);
  if (access == Access::read) {
    FileHandle file(H5Fopen(real.c_str(), H5F_ACC_RDONLY, list));
    if (!file) fail_open(path, path);
    return file;
  }
  // Asked before the library opens the file, since that writes a mark into it already.
  if (is_locked(real)) fail_locked(path);
  FileHandle file = open_for_writing(path, real, list);
  if (!remembers_free_space_of(file.get())) return file;
  file.reset();
  allocate_singly(list);
  return open_for_writing(path, real, list);
}

FileHandle open_local(const std::string& path, Access access, hid_t list) {
  std::error_code error;
  if (is_family(path) && !fs::exists(path, error)) {
    const std::string first = family_member(path, 0);
    if (fs::exists(first, error)) {
      check_host_file(first, access);
      return open_family(path, access, list);
    }
  }
  check_host_file(path, access);
  return open_host_file(path, access, list);
}

FileHandle open_remote(const std::string& address, Access access, hid_t list) {
  if (access == Access::write) {
    throw StatementError(Status::host_refused, "File " + quoted(address) +
                                                   " is remote and cannot be written (copy it to "
                                                   "this machine)");
  }
  const std::string place = prepare_remote(address, list);
  FileHandle file(H5Fopen(place.c_str(), H5F_ACC_RDONLY, list));
  if (!file) fail_open(address, "");
  return file;
}

}  // namespace

std::string host_path(const std::string& file) {
  if (is_remote(file)) return file;
  std::string path = file;
  if (path.starts_with("~/")) {
    const char* home =
        std::getenv("HOME");  // NOLINT(concurrency-mt-unsafe): the engine runs on one thread
    if (home != nullptr) path.replace(0, 1, home);
  }
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

FileHandle open_file(const std::string& path, Access access, const FileOptions& options) {
  const PropertyHandle list = file_access(options);
  return is_remote(path) ? open_remote(path, access, list.get())
                         : open_local(path, access, list.get());
}

void create_file(const std::string& path, bool replace, const FileOptions& options) {
  if (is_remote(path)) {
    throw StatementError(Status::host_refused,
                         "File " + quoted(path) + " is remote and cannot be created");
  }
  std::error_code error;
  if (!replace && fs::exists(fs::symlink_status(path, error))) {
    throw StatementError(
        Status::exists_already,
        "File " + quoted(path) + " already exists (CREATE OR REPLACE FILE replaces it)");
  }
  check_creatable(path);
  const std::string made = replace ? path + ".kelvo-new" : path;
  const PropertyHandle list = file_access(options);
  set_driver(list.get());
  FileHandle file(
      H5Fcreate(made.c_str(), replace ? H5F_ACC_TRUNC : H5F_ACC_EXCL, H5P_DEFAULT, list.get()));
  const auto what = [&path] { return "File " + quoted(path) + " cannot be created"; };
  check_id(file.get(), what);
  if (file.reset() < 0) {
    fs::remove(made, error);
    fail_hdf5(what());
  }
  if (!replace) return;
  fs::rename(made, path, error);
  if (error) {
    const int cause = error.value();
    fs::remove(made, error);
    fail_creation(path, cause);
  }
}

bool is_hdf5_file(const std::string& path) {
  try {
    open_file(path, Access::read, {});
    return true;
  } catch (const StatementError& error) {
    return is_marked_open(error);
  }
}

void flush_file(hid_t file, FlushScope scope) {
  check_done(H5Fflush(file, scope == FlushScope::local ? H5F_SCOPE_LOCAL : H5F_SCOPE_GLOBAL),
             [] { return std::string("The file in use cannot be flushed"); });
}

std::string file_name(hid_t object) {
  const auto what = [] { return std::string("The name of a file cannot be read"); };
  const ssize_t length = H5Fget_name(object, nullptr, 0);
  if (length < 0) fail_hdf5(what());
  std::string name(static_cast<std::size_t>(length), '\0');
  H5Fget_name(object, name.data(), name.size() + 1);
  return name;
}

Access access_of(hid_t object) {
  const auto what = [] { return std::string("How a file is open cannot be read"); };
  const FileHandle file(check_id(H5Iget_file_id(object), what));
  unsigned intent = 0;
  check_done(H5Fget_intent(file.get(), &intent), what);
  return (intent & H5F_ACC_RDWR) != 0 ? Access::write : Access::read;
}

}  // namespace kelvo
