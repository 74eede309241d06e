// Calls of the host's file system.
#include "storage/host.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "error.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t copy_block_bytes = std::size_t{1024} * 1024;
constexpr std::string_view unfinished_suffix = ".kelvo-new";

std::string finished_name(const std::string& path) {
  return path.ends_with(unfinished_suffix) ? path.substr(0, path.size() - unfinished_suffix.size())
                                           : path;
}

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

class Descriptor {
 public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }

  [[nodiscard]] int get() const noexcept { return number_; }

 private:
  int number_;
};

// What is written beside a name is named in messages as it will be.
void write_all(int descriptor, const char* bytes, std::size_t count, const std::string& path) {
  while (count > 0) {
    const ssize_t done = ::write(descriptor, bytes, count);
    if (done < 0) refuse(HostKind::file, finished_name(path), "written", errno);
    bytes += done;
    count -= static_cast<std::size_t>(done);
  }
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

void copy_bytes(const std::string& from, const std::string& to, std::uintmax_t bytes) {
  const Descriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (source.get() < 0) refuse(HostKind::file, from, "opened", errno);
  const Descriptor copy(::open(to.c_str(), O_WRONLY | O_CLOEXEC));
  if (copy.get() < 0) refuse(HostKind::file, to, "opened", errno);
  const auto block = std::make_unique<std::array<char, copy_block_bytes>>();
  while (bytes > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uintmax_t>(bytes, block->size()));
    const ssize_t got = ::read(source.get(), block->data(), wanted);
    if (got < 0) refuse(HostKind::file, from, "read", errno);
    if (got == 0) return;
    write_all(copy.get(), block->data(), static_cast<std::size_t>(got), to);
    bytes -= static_cast<std::uintmax_t>(got);
  }
}

void copy_host_file(const std::string& from, const std::string& to) {
  const UnfinishedFile unfinished(to);
  std::error_code error;
  const fs::perms permissions = fs::status(from, error).permissions();
  const Descriptor made(
      ::open(unfinished.path().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (made.get() < 0) refuse(HostKind::file, to, "created", errno);
  copy_bytes(from, unfinished.path(), UINTMAX_MAX);
  fs::permissions(unfinished.path(), permissions, error);
  if (error) refuse(HostKind::file, to, "created", error.value());
  unfinished.finish();
}

void expect_room(const std::string& path, std::uintmax_t bytes) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  rlimit limit{};
  const bool limited = ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
  const int full = limited && size + bytes > limit.rlim_cur             ? EFBIG
                   : fs::space(path, error).available < bytes && !error ? ENOSPC
                                                                        : 0;
  if (full == 0) return;
  throw StatementError(Status::host_refused, "File " + quoted(finished_name(path)) +
                                                 " has no room for " + std::to_string(bytes) +
                                                 " bytes more: " + std::strerror(full));
}

namespace {

// What stands at `place` is named in messages as `path`.
void remove_as(const std::string& path, const std::string& place) {
  if (::unlink(place.c_str()) != 0) refuse(HostKind::file, path, "dropped", errno);
}

// Files out of the way, which come back to their names unless they are removed.
class FilesAside {
 public:
  FilesAside() = default;
  FilesAside(const FilesAside&) = delete;
  FilesAside& operator=(const FilesAside&) = delete;
  ~FilesAside() {
    for (const Moved& file : files_) move_without_replacing(file.aside, file.path);
  }

  void take(const std::string& path) {
    const std::string name =
        ".kelvo-old-" + std::to_string(::getpid()) + "-" + std::to_string(files_.size());
    std::string aside = (fs::path(path).parent_path() / name).string();
    const int error = move_without_replacing(path, aside);
    if (error != 0) refuse(HostKind::file, path, "dropped", error);
    files_.push_back({path, std::move(aside)});
  }

  void remove() {
    for (; !files_.empty(); files_.pop_back()) remove_as(files_.back().path, files_.back().aside);
  }

 private:
  struct Moved {
    std::string path;
    std::string aside;
  };

  std::vector<Moved> files_;
};

}  // namespace

// A file that can be moved within its directory can be removed from it, and be moved back.
void remove_host_files(const std::vector<std::string>& paths) {
  if (paths.size() == 1) return remove_as(paths[0], paths[0]);
  FilesAside aside;
  for (const std::string& path : paths) aside.take(path);
  aside.remove();
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

UnfinishedFile::UnfinishedFile(std::string path)
    : path_(std::move(path)), unfinished_(path_ + std::string(unfinished_suffix)) {}

void UnfinishedFile::finish() const {
  const int error = move_without_replacing(unfinished_.path(), path_);
  if (error != 0) refuse(HostKind::file, path_, "created", error);
}

}  // namespace kelvo
