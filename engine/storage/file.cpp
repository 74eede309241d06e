// Opening and making HDF5 files; the causes of a failed open are told apart here.
#include "storage/file.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "storage/check.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

std::string cannot_set_up() { return "File access cannot be set up"; }

PropertyHandle file_access(Access access, const FileOptions& options) {
  PropertyHandle list(check_id(H5Pcreate(H5P_FILE_ACCESS), cannot_set_up));
  // STRONG: closing the file closes what is still open in it, so that a file is really closed when
  // we say so.
  check_done(H5Pset_fclose_degree(list.get(), H5F_CLOSE_STRONG), cannot_set_up);
  check_done(H5Pset_libver_bounds(list.get(), options.low, options.high), cannot_set_up);
  if (access == Access::read)
    check_done(H5Pset_file_locking(list.get(), false, true), cannot_set_up);
  return list;
}

[[noreturn]] void refuse(Status status, const std::string& path, const std::string& why) {
  throw StatementError(status, "File " + quoted(path) + " " + why);
}

[[noreturn]] void refuse_errno(const std::string& path, Access access, int error) {
  const std::string verb =
      access == Access::read ? "cannot be opened: " : "cannot be opened for writing: ";
  refuse(Status::host_refused, path, verb + std::strerror(error));
}

// What the host alone can say, before the HDF5 library is asked.
void check_host_file(const std::string& path, Access access) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found)
    refuse(Status::does_not_exist, path, "does not exist");
  if (error) refuse_errno(path, access, error.value());
  if (fs::is_directory(status))
    refuse(Status::wrong_kind, path, "is a directory (SHOW FILE lists the files in it)");
  if (::access(path.c_str(), access == Access::read ? R_OK : R_OK | W_OK) != 0)
    refuse_errno(path, access, errno);
}

std::uint64_t number_behind(const std::string& text, std::string_view key) {
  const std::size_t at = text.find(key);
  return at == std::string::npos ? 0 : std::strtoull(text.c_str() + at + key.size(), nullptr, 10);
}

std::string truncation(const std::string& reason) {
  const std::uint64_t size = number_behind(reason, "eof = ");
  const std::uint64_t stored = number_behind(reason, "stored_eof = ");
  return "is truncated: it has " + std::to_string(size) + " of " + std::to_string(stored) +
         " bytes; copy it again from its source";
}

// The HDF5 library tells its causes apart only in its words; these are the ones that have a way out
// of their own.
struct Cause {
  std::string_view words;
  Status status;
  std::string_view why;
};

constexpr std::array<Cause, 7> causes = {{
    {"file signature not found", Status::hdf5_refused, "is not an HDF5 file"},
    {"already open for write", Status::hdf5_refused,
     "is still open for writing, or was left open by a program that crashed (wait for its writer, "
     "or clear the mark with "
     "h5clear -s)"},
    {"already open for read-only", Status::hdf5_refused,
     "is open for reading in this program; close it there first"},
    {"unable to lock file", Status::hdf5_refused,
     "is locked by another program; try again when that has closed it"},
    {"bad superblock version", Status::not_available,
     "was made by a newer HDF5 library; update the one in use"},
    {"superblock extension", Status::hdf5_refused,
     "is damaged in its superblock; restore it from a copy"},
    {"checksum", Status::hdf5_refused, "is damaged (a checksum is wrong); restore it from a copy"},
}};

[[noreturn]] void diagnose(const std::string& path) {
  const std::string reason = hdf5_reason();
  const std::string stack = hdf5_error_stack();
  if (stack.find("truncated file") != std::string::npos) {
    refuse(Status::hdf5_refused, path, truncation(stack));
  }
  for (const Cause& cause : causes) {
    if (stack.find(cause.words) != std::string::npos)
      refuse(cause.status, path, std::string(cause.why));
  }
  refuse(Status::hdf5_refused, path, "cannot be opened: " + reason);
}

[[noreturn]] void refuse_creation(const std::string& path, int error) {
  refuse(Status::host_refused, path, std::string("cannot be created: ") + std::strerror(error));
}

// HDF5's own message for a failed creation hides the host's reason, so the host is asked first.
void check_creatable(const std::string& path) {
  const fs::path directory = fs::path(path).parent_path();
  std::error_code error;
  if (fs::is_directory(path, error)) refuse(Status::wrong_kind, path, "is a directory");
  if (!fs::is_directory(directory, error))
    refuse_creation(path, fs::exists(directory, error) ? ENOTDIR : ENOENT);
  if (::access(directory.c_str(), W_OK | X_OK) != 0) refuse_creation(path, errno);
}

}  // namespace

std::string host_path(const std::string& file) {
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
  check_host_file(path, access);
  const PropertyHandle list = file_access(access, options);
  const unsigned flags = access == Access::read ? H5F_ACC_RDONLY : H5F_ACC_RDWR;
  FileHandle file(H5Fopen(path.c_str(), flags, list.get()));
  if (!file) diagnose(path);
  return file;
}

void create_file(const std::string& path, bool replace, const FileOptions& options) {
  std::error_code error;
  if (!replace && fs::exists(fs::symlink_status(path, error))) {
    refuse(Status::exists_already, path, "already exists (CREATE OR REPLACE FILE replaces it)");
  }
  check_creatable(path);
  const std::string made = replace ? path + ".kelvo-new" : path;
  const PropertyHandle list = file_access(Access::write, options);
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
    refuse_creation(path, cause);
  }
}

bool is_hdf5_file(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error) && H5Fis_hdf5(path.c_str()) > 0;
}

}  // namespace kelvo
