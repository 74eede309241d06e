// The causes of a failed open, as tables of what the HDF5 library says and of how files begin.
#include "storage/file_causes.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "storage/check.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(Status status, const std::string& path, const std::string& why) {
  throw StatementError(status, "File " + quoted(path) + " " + why);
}

[[noreturn]] void refuse_errno(const std::string& path, Access access, int error) {
  const std::string verb =
      access == Access::read ? "cannot be opened: " : "cannot be opened for writing: ";
  refuse(Status::host_refused, path, verb + std::strerror(error));
}

// What stands at a path in the place of a regular file. A pipe would make its reader wait.
std::string kind_of(fs::file_type type) {
  switch (type) {
    case fs::file_type::fifo:
      return "a named pipe";
    case fs::file_type::socket:
      return "a socket";
    case fs::file_type::block:
    case fs::file_type::character:
      return "a device";
    default:
      return "of an unknown kind";
  }
}

// The number behind the first `key`.
std::uint64_t number_behind(std::string_view text, std::string_view key) {
  const std::size_t at = text.find(key);
  if (at == std::string_view::npos) return 0;
  return std::strtoull(std::string(text.substr(at + key.size(), 20)).c_str(), nullptr, 10);
}

// "eof" is counted from the end of the user block, "stored_eof" from the file's beginning.
std::string truncation(std::string_view reason) {
  const std::uint64_t user_block = number_behind(reason, "base_addr = ");
  const std::uint64_t size = number_behind(reason, "eof = ");
  const std::uint64_t stored = number_behind(reason, "stored_eof = ");
  return "is truncated: it has " + std::to_string(size + user_block) + " of " +
         std::to_string(stored) + " bytes; copy it again from its source";
}

// The HDF5 library tells its causes apart only in its words; these are the ones that have a way out
// of their own.
struct Cause {
  std::string_view words;
  Status status;
  std::string_view why;
};

constexpr std::string_view marked_open =
    "is still open for writing, or was left open by a program that crashed (wait for its writer, "
    "or clear the mark with h5clear -s)";

constexpr std::array<Cause, 6> causes = {{
    {"already open for write", Status::hdf5_refused, marked_open},
    {"already open for read-only", Status::hdf5_refused,
     "is open for reading in this program; close it there first"},
    {"bad superblock version", Status::not_available,
     "was made by a newer HDF5 library; update the one in use"},
    {"superblock extension", Status::hdf5_refused,
     "is damaged in its superblock; restore it from a copy"},
    {"checksum", Status::hdf5_refused, "is damaged (a checksum is wrong); restore it from a copy"},
    {"file signature not found", Status::hdf5_refused, "is not an HDF5 file"},
}};

// What files are that are taken for HDF5 files, by their first bytes.
struct Beginning {
  std::string_view bytes;
  std::string_view what;
};

constexpr std::array<Beginning, 11> beginnings = {{
    {"CDF\x01", "netCDF classic (nccopy -k nc4 converts it)"},
    {"CDF\x02", "netCDF classic (nccopy -k nc4 converts it)"},
    {"\x0e\x03\x13\x01", "HDF4 (h4toh5 converts it)"},
    {"\x1f\x8b", "compressed by gzip; unpack it first"},
    {"PK\x03\x04", "a zip archive; unpack it first"},
    {"BZh", "compressed by bzip2; unpack it first"},
    {"\xfd"
     "7zXZ",
     "compressed by xz; unpack it first"},
    {"\x28\xb5\x2f\xfd", "compressed by zstd; unpack it first"},
    {"version https://git-lfs", "a pointer of Git LFS; git lfs pull fetches the file"},
    {"<", "a page of HTML or XML, as a failed download leaves it"},
    {"\x93NUMPY", "a NumPy file"},
}};

// Enough for the superblock, and the driver's name behind it.
std::string first_bytes(const std::string& path) {
  std::array<char, 256> bytes{};
  std::ifstream file(path, std::ios::binary);
  file.read(bytes.data(), bytes.size());
  return {bytes.data(), static_cast<std::size_t>(file.gcount())};
}

// Drivers that spread a file over several write their names behind the superblock of the first.
constexpr std::array<Cause, 2> drivers = {{
    {"NCSAfami", Status::hdf5_refused,
     "is one file of a family (with %d in the place of its number the name opens them all)"},
    {"NCSAmult", Status::not_available,
     "is one file of several that were written by the split or multi driver; this engine reads "
     "single files and families"},
}};

// Throws where the file was written by one of these drivers.
void refuse_part(const std::string& path) {
  const std::string bytes = first_bytes(path);
  for (const Cause& driver : drivers) {
    if (bytes.find(driver.words) != std::string::npos)
      refuse(driver.status, path, std::string(driver.why));
  }
}

constexpr std::string_view hdf5_signature = "\x89HDF\r\n\x1a\n";

// The path with the last number before its suffix one higher, as the next file of a family is
// called; "" without a number.
std::string next_in_family(const std::string& path) {
  constexpr std::string_view digits = "0123456789";
  const std::size_t name = path.rfind('/') + 1;
  std::size_t at = path.find_last_of(digits, path.rfind('.'));
  if (at == std::string::npos || at < name) return "";
  std::string next = path;
  for (; next[at] == '9'; --at) {
    next[at] = '0';
    if (at == name || digits.find(next[at - 1]) == std::string_view::npos)
      return next.insert(at, 1, '1');
  }
  ++next[at];
  return next;
}

// Old HDF5 libraries wrote no driver's name into families: what shows one is that the next file is
// no HDF5 file of its own.
bool goes_on_in_family(const std::string& path) {
  const std::string next = next_in_family(path);
  std::error_code error;
  return !next.empty() && fs::is_regular_file(next, error) &&
         !first_bytes(next).starts_with(hdf5_signature);
}

// What a file that has no HDF5 signature is instead.
std::string what_instead(const std::string& bytes) {
  if (bytes.starts_with(hdf5_signature)) return " that can be read: its superblock is damaged";
  // The signature is made so that what changes line ends or drops the eighth bit changes it.
  if (bytes.size() > 4 && bytes.compare(1, 3, "HDF") == 0) {
    return " any more: its first bytes were changed, as a transfer in text mode does; copy it "
           "again from its source";
  }
  for (const Beginning& beginning : beginnings) {
    if (bytes.starts_with(beginning.bytes)) return ": it looks like " + std::string(beginning.what);
  }
  return "";
}

}  // namespace

void check_host_file(const std::string& path, Access access) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found)
    refuse(Status::does_not_exist, path, "does not exist");
  if (error) refuse_errno(path, access, error.value());
  if (fs::is_directory(status))
    refuse(Status::wrong_kind, path, "is a directory (SHOW FILE lists the files in it)");
  if (!fs::is_regular_file(status))
    refuse(Status::wrong_kind, path, "is " + kind_of(status.type()) + ", not a regular file");
  if (::access(path.c_str(), access == Access::read ? R_OK : R_OK | W_OK) != 0)
    refuse_errno(path, access, errno);
  if (fs::file_size(path, error) == 0)
    refuse(Status::hdf5_refused, path, "is not an HDF5 file: it is empty");
}

void fail_open(const std::string& path, const std::string& first) {
  const std::string reason = hdf5_reason();
  const std::string stack = hdf5_error_stack();
  if (path == first) refuse_part(path);
  const std::size_t truncated = stack.find("truncated file");
  if (truncated != std::string::npos && path == first && goes_on_in_family(path))
    refuse(drivers[0].status, path, std::string(drivers[0].why));
  if (truncated != std::string::npos)
    refuse(Status::hdf5_refused, path, truncation(std::string_view(stack).substr(truncated)));
  for (const Cause& cause : causes) {
    if (stack.find(cause.words) == std::string::npos) continue;
    std::string why(cause.why);
    if (&cause == &causes.back() && !first.empty()) why += what_instead(first_bytes(first));
    refuse(cause.status, path, why);
  }
  refuse(Status::hdf5_refused, path, "cannot be opened: " + reason);
}

bool is_marked_open(const StatementError& error) {
  return std::string_view(error.what()).ends_with(marked_open);
}

void fail_locked(const std::string& path) {
  refuse(Status::hdf5_refused, path,
         "is locked by another program; try again when that has closed it");
}

void fail_creation(const std::string& path, int error) {
  refuse(Status::host_refused, path, std::string("cannot be created: ") + std::strerror(error));
}

void check_creatable(const std::string& path) {
  const fs::path directory = fs::path(path).parent_path();
  std::error_code error;
  if (fs::is_directory(path, error)) refuse(Status::wrong_kind, path, "is a directory");
  if (!fs::is_directory(directory, error))
    fail_creation(path, fs::exists(directory, error) ? ENOTDIR : ENOENT);
  if (::access(directory.c_str(), W_OK | X_OK) != 0) fail_creation(path, errno);
}

}  // namespace kelvo
