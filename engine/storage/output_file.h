// A new file of the host that is there whole or not at all: written beside its place under another
// name, and given its own only by commit().
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "storage/temporary_name.h"

namespace kelvo {

class OutputFile {
 public:
  /// `path` is absolute. Throws StatementError: exists_already for a file that may not be replaced,
  /// host_refused where none can be made there.
  OutputFile(std::string path, bool replace);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  /// Removes what was written, unless it was committed.
  ~OutputFile();

  void append(const void* bytes, std::size_t count);

  /// Writes bytes over those at the file's beginning.
  void write_first(const void* bytes, std::size_t count);

  /// Once all is on the disk, gives the file its name. Never over another one, even if it was made
  /// in the meantime, unless it may be replaced.
  void commit();

 private:
  void write(const void* bytes, std::size_t count, long long offset);
  [[noreturn]] void fail(const char* what) const;
  void rename_beside();

  std::string path_;
  bool replace_;
  std::optional<TemporaryName> beside_;  // the name while it is written
  int descriptor_ = -1;
  long long size_ = 0;
};

}  // namespace kelvo
