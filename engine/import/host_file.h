// Opening host files to read values from, and errors that say where in them.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "error.h"

namespace kelvo {

struct CloseFile {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using HostFile = std::unique_ptr<std::FILE, CloseFile>;

/// Throws StatementError where the file does not exist, is a directory or cannot be read.
HostFile open_host_file(const std::string& path);

/// Throws that reading the file failed, for the reason that errno tells.
[[noreturn]] void refuse_host_file(const std::string& path);

/// Throws the error with "File "f.csv", line 5, column 2: " in front; a line or column of 0 is left
/// out.
[[noreturn]] void fail_in_file(const std::string& path, std::uint64_t line, std::uint64_t column,
                               const StatementError& error);

}  // namespace kelvo
