// Directories and files of the host: made, moved, copied and removed, never over existing ones.
// Paths are absolute. Each function throws StatementError: does_not_exist, exists_already,
// wrong_kind, or host_refused with the host's reason.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "storage/temporary_name.h"

namespace kelvo {

enum class HostKind {
  none,
  file,  // anything that is no directory, a symbolic link that leads nowhere too
  directory,
};

HostKind host_kind_at(const std::string& path);

/// Whether it is there. Throws where it is, but of another kind.
bool is_on_host(const std::string& path, HostKind kind);
void expect_on_host(const std::string& path, HostKind kind);
void expect_free_on_host(const std::string& path, HostKind kind);

/// Names in a directory of this kind (symbolic links are followed), in byte order.
std::vector<std::string> names_in_directory(const std::string& directory, HostKind kind);

/// With its missing parents; when one of them cannot be made, those made before are removed again.
void create_directory(const std::string& path);

void rename_on_host(const std::string& from, const std::string& to, HostKind kind);

/// The copy has its name only once it is whole.
void copy_host_file(const std::string& from, const std::string& to);

/// Writes the first `bytes` bytes of a file, or as many as it has, over those of another one, which
/// is there.
void copy_bytes(const std::string& from, const std::string& to, std::uintmax_t bytes);

/// Throws unless the file, which is there, can grow by so many bytes.
void expect_room(const std::string& path, std::uintmax_t bytes);

/// All of them, or none where one cannot be removed.
void remove_host_files(const std::vector<std::string>& paths);

/// Throws where the directory cannot be removed: it is not empty and `recursive` is false, or
/// something in it may not be removed.
void check_removable(const std::string& path, bool recursive);
void remove_directory(const std::string& path, bool recursive);

/// Whether both paths lead to the same file or directory, symbolic links followed.
bool is_same_on_host(const std::string& one, const std::string& other);

/// Whether `used` is the directory or leads to something below it.
bool is_within_directory(const std::string& used, const std::string& directory);

/// The name beside that of a new file under which it is written until it is whole. Removes what is
/// left there when the file was not finished.
class UnfinishedFile {
 public:
  explicit UnfinishedFile(std::string path);

  [[nodiscard]] const std::string& path() const noexcept { return unfinished_.path(); }
  /// Gives the file its name.
  void finish() const;

 private:
  std::string path_;
  TemporaryName unfinished_;
};

}  // namespace kelvo
