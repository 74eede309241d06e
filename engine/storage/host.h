// Directories and files of the host: made, moved, copied and removed, never over existing ones.
// Paths are absolute. Each function throws StatementError: does_not_exist, exists_already,
// wrong_kind, or host_refused with the host's reason.
#pragma once

#include <string>
#include <vector>

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

void remove_host_file(const std::string& path);

/// Throws where the directory cannot be removed: it is not empty and `recursive` is false, or
/// something in it may not be removed.
void check_removable(const std::string& path, bool recursive);
void remove_directory(const std::string& path, bool recursive);

/// Whether both paths lead to the same file or directory, symbolic links followed.
bool is_same_on_host(const std::string& one, const std::string& other);

/// Whether `used` is the directory or leads to something below it.
bool is_within_directory(const std::string& used, const std::string& directory);

/// The name beside `path` under which a new file is written until it is whole.
std::string unfinished_name(const std::string& path);

/// Gives the file written beside its name.
void finish_file(const std::string& path);

}  // namespace kelvo
