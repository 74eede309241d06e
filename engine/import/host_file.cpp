// Host files and where they are wrong.
#include "import/host_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "error.h"

namespace kelvo {

HostFile open_host_file(const std::string& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw StatementError(Status::wrong_kind, "File " + quoted(path) + " is a directory");
  }
  HostFile file(std::fopen(path.c_str(), "rb"));
  if (file != nullptr) return file;
  if (errno == ENOENT)
    throw StatementError(Status::does_not_exist, "File " + quoted(path) + " does not exist");
  refuse_host_file(path);
}

void refuse_host_file(const std::string& path) {
  throw StatementError(Status::host_refused,
                       "File " + quoted(path) + " cannot be read: " + std::strerror(errno));
}

void fail_in_file(const std::string& path, std::uint64_t line, std::uint64_t column,
                  const StatementError& error) {
  std::string message = "File " + quoted(path);
  if (line > 0) message += ", line " + std::to_string(line);
  if (column > 0) message += ", column " + std::to_string(column);
  // A position within the file's text would be taken for one in the statement.
  const Status status =
      error.status() == Status::not_a_statement ? Status::wrong_kind : error.status();
  throw StatementError(status, message + ": " + error.what());
}

}  // namespace kelvo
