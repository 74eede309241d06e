// Names of host files that are written beside their place: they go away with the statement,
// whatever ends it.
#pragma once

#include <string>

namespace kelvo {

class TemporaryName {
 public:
  explicit TemporaryName(std::string path);
  TemporaryName(const TemporaryName&) = delete;
  TemporaryName& operator=(const TemporaryName&) = delete;
  /// Removes the file, unless it was given another name.
  ~TemporaryName();

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
};

/// Removes what is left under such names by owners that were left without being unwound
/// (storage/crash_guard.h).
void remove_temporary_names() noexcept;

}  // namespace kelvo
