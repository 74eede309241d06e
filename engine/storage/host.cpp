// Calls of the host's file system.
#include "storage/host.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "error.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

std::string title(HostKind kind) { return kind == HostKind::directory ? "Directory" : "File"; }

std::string with_article(HostKind kind) {
  return kind == HostKind::directory ? "a directory" : "a file";
}

[[noreturn]] void refuse(HostKind kind, const std::string& path, const std::string& what,
                         int error) {
  throw StatementError(Status::host_refused, title(kind) + " " + quoted(path) + " cannot be " +
                                                 what + ": " + std::strerror(error));
}

// Moves without replacing, in one step where the file system can do that.
int move_without_replacing(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  std::error_code error;
  if (fs::exists(fs::symlink_status(to, error))) return EEXIST;
  return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

bool may_change(const std::string& directory) {
  return ::access(directory.c_str(), W_OK | X_OK) == 0;
}

}  // namespace

HostKind host_kind_at(const std::string& path) {
  std::error_code error;
  if (fs::is_directory(path, error)) return HostKind::directory;
  return fs::exists(fs::symlink_status(path, error)) ? HostKind::file : HostKind::none;
}

bool is_on_host(const std::string& path, HostKind kind) {
  const HostKind found = host_kind_at(path);
  if (found != HostKind::none && found != kind) {
    throw StatementError(Status::wrong_kind, quoted(path) + " is " + with_article(found) +
                                                 ", not " + with_article(kind));
  }
  return found == kind;
}

void expect_on_host(const std::string& path, HostKind kind) {
  if (is_on_host(path, kind)) return;
  throw StatementError(Status::does_not_exist,
                       title(kind) + " " + quoted(path) + " does not exist");
}

void expect_free_on_host(const std::string& path, HostKind kind) {
  const HostKind found = host_kind_at(path);
  if (found == HostKind::none) return;
  throw StatementError(Status::exists_already,
                       found == kind
                           ? title(kind) + " " + quoted(path) + " already exists"
                           : quoted(path) + " already exists and is " + with_article(found));
}

std::vector<std::string> names_in_directory(const std::string& directory, HostKind kind) {
  std::vector<std::string> names;
  std::error_code error;
  fs::directory_iterator entry(directory, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (host_kind_at(entry->path().string()) == kind)
      names.push_back(entry->path().filename().string());
  }
  if (error) refuse(HostKind::directory, directory, "read", error.value());
  std::sort(names.begin(), names.end());
  return names;
}

void create_directory(const std::string& path) {
  std::vector<fs::path> missing;
  for (fs::path way = path; host_kind_at(way.string()) == HostKind::none && way.has_relative_path();
       way = way.parent_path())
    missing.push_back(way);
  std::error_code error;
  for (auto next = missing.rbegin(); next != missing.rend(); ++next) {
    if (fs::create_directory(*next, error)) continue;
    const int cause = error ? error.value() : EEXIST;
    for (auto made = next; made != missing.rbegin(); --made) fs::remove(*std::prev(made), error);
    refuse(HostKind::directory, path, "created", cause);
  }
}

void rename_on_host(const std::string& from, const std::string& to, HostKind kind) {
  const int error = move_without_replacing(from, to);
  if (error != 0) refuse(kind, from, "renamed to " + quoted(to), error);
}

void copy_host_file(const std::string& from, const std::string& to) {
  const std::string unfinished = unfinished_name(to);
  std::error_code error;
  fs::copy_file(from, unfinished, fs::copy_options::overwrite_existing, error);
  if (error) {
    const int cause = error.value();
    fs::remove(unfinished, error);
    refuse(HostKind::file, from, "copied to " + quoted(to), cause);
  }
  finish_file(to);
}

void remove_host_file(const std::string& path) {
  if (::unlink(path.c_str()) != 0) refuse(HostKind::file, path, "dropped", errno);
}

void check_removable(const std::string& path, bool recursive) {
  std::error_code error;
  if (!may_change(fs::path(path).parent_path().string()))
    refuse(HostKind::directory, path, "dropped", errno);
  if (!recursive && !fs::is_empty(path, error)) {
    throw StatementError(Status::host_refused, "Directory " + quoted(path) +
                                                   " is not empty (RECURSIVE drops what is in it)");
  }
  if (!recursive || fs::is_symlink(path, error) || fs::is_empty(path, error)) return;
  if (!may_change(path)) refuse(HostKind::directory, path, "dropped", errno);
  fs::recursive_directory_iterator entry(path, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    const bool within = entry->is_directory(error) && !entry->is_symlink(error);
    const std::string below = entry->path().string();
    if (within && !fs::is_empty(below, error) && !may_change(below))
      refuse(HostKind::directory, below, "dropped", EACCES);
  }
  if (error) refuse(HostKind::directory, path, "dropped", error.value());
}

void remove_directory(const std::string& path, bool recursive) {
  std::error_code error;
  recursive ? fs::remove_all(path, error) : std::uintmax_t{fs::remove(path, error)};
  if (error) refuse(HostKind::directory, path, "dropped", error.value());
}

bool is_same_on_host(const std::string& one, const std::string& other) {
  std::error_code error;
  return one == other || fs::equivalent(one, other, error);
}

bool is_within_directory(const std::string& used, const std::string& directory) {
  std::error_code error;
  const fs::path below = fs::weakly_canonical(used, error);
  const fs::path above = fs::weakly_canonical(directory, error);
  return std::mismatch(above.begin(), above.end(), below.begin(), below.end()).first == above.end();
}

std::string unfinished_name(const std::string& path) { return path + ".kelvo-new"; }

void finish_file(const std::string& path) {
  const std::string unfinished = unfinished_name(path);
  const int error = move_without_replacing(unfinished, path);
  if (error == 0) return;
  ::unlink(unfinished.c_str());
  refuse(HostKind::file, path, "created", error);
}

}  // namespace kelvo
