// The working directory, and what the host's directories hold. All paths are absolute.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "storage/host.h"

namespace kelvo {

/// Throws host_refused where the directory was removed meanwhile.
std::string working_directory();

/// Throws StatementError where there is no such directory, or it may not be entered.
void change_working_directory(const std::string& path);

/// Bytes of a regular file; nothing for whatever else stands there, or where nothing does.
std::optional<std::uint64_t> host_file_size(const std::string& path);

struct HostRequest {
  HostKind kind = HostKind::file;
  bool recursive = false;
  /// Whether it may be listed; `path` is relative to where the listing began and ends in `name`.
  std::function<bool(const std::string& name, const std::string& path)> is_named;
};

/// Paths, relative to the directory, of what it holds, in name order, a directory before what is in
/// it. A symbolic link is what it leads to, but it is not gone through; one that leads nowhere is
/// passed over.
std::vector<std::string> list_directory(const std::string& directory, const HostRequest& request);

}  // namespace kelvo
