// Walking directories of the host.
#include "storage/host_listing.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "error.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& path, const std::string& verb, int error) {
  throw StatementError(Status::host_refused, "Directory " + quoted(path) + " cannot be " + verb +
                                                 ": " + std::strerror(error));
}

struct HostEntry {
  std::string name;
  bool is_directory = false;
  bool is_link = false;
};

bool describe(const fs::directory_entry& found, HostEntry* entry) {
  std::error_code error;
  entry->name = found.path().filename().string();
  entry->is_link = found.is_symlink(error);
  entry->is_directory = found.is_directory(error);
  return !entry->is_link || found.exists(error);
}

std::vector<HostEntry> read_directory(const std::string& path) {
  std::error_code error;
  std::vector<HostEntry> entries;
  fs::directory_iterator next(path, error);
  for (; !error && next != fs::directory_iterator(); next.increment(error)) {
    HostEntry entry;
    if (describe(*next, &entry)) entries.push_back(std::move(entry));
  }
  if (error) refuse(path, "read", error.value());
  std::sort(entries.begin(), entries.end(),
            [](const HostEntry& left, const HostEntry& right) { return left.name < right.name; });
  return entries;
}

// A directory on the way down.
struct Level {
  std::string prefix;
  std::vector<HostEntry> entries;
  std::size_t next = 0;
};

}  // namespace

std::string working_directory() {
  std::error_code error;
  const fs::path path = fs::current_path(error);
  if (error) {
    throw StatementError(Status::host_refused,
                         "The directory in use cannot be read: " + error.message() +
                             " (USE DIRECTORY puts another one in use)");
  }
  return path.string();
}

void change_working_directory(const std::string& path) {
  expect_on_host(path, HostKind::directory);
  if (chdir(path.c_str()) != 0) refuse(path, "used", errno);
}

std::optional<std::uint64_t> host_file_size(const std::string& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  const std::uintmax_t size = fs::file_size(path, error);
  if (error) return std::nullopt;
  return size;
}

std::vector<std::string> list_directory(const std::string& directory, const HostRequest& request) {
  expect_on_host(directory, HostKind::directory);
  std::vector<std::string> found;
  std::vector<Level> levels;
  levels.push_back({"", read_directory(directory)});
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.entries.size()) {
      levels.pop_back();
      continue;
    }
    const HostEntry entry = std::move(level.entries[level.next++]);
    const std::string path = level.prefix + entry.name;
    const bool wanted = entry.is_directory == (request.kind == HostKind::directory);
    if (wanted && (!request.is_named || request.is_named(entry.name, path))) found.push_back(path);
    if (request.recursive && entry.is_directory && !entry.is_link) {
      levels.push_back({path + "/", read_directory((fs::path(directory) / path).string())});
    }
  }
  return found;
}

}  // namespace kelvo
