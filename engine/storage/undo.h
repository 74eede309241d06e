// What a statement replaces in host files is kept until the statement has come to its end, so that
// one that fails can be taken back, whatever it had done. The driver (storage/driver.h) tells of
// each write before it is made.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "error.h"
#include "storage/spool.h"
#include "values/scratch.h"

namespace kelvo {

/// Where bytes go that are written over.
struct KeptBytes {
  static constexpr std::size_t memory_budget = std::size_t{64} * 1024 * 1024;

  Spool bytes{memory_budget};
  Scratch block;  // on their way
};

/// A host file that a statement opened for writing, as it was before.
class ChangedFile {
 public:
  /// Takes the descriptor over: it keeps the file, and the lock on it, until the statement's end.
  /// `is_new`: the file was made by the statement.
  ChangedFile(int descriptor, std::string path, bool is_new);
  ChangedFile(const ChangedFile&) = delete;
  ChangedFile& operator=(const ChangedFile&) = delete;
  ~ChangedFile();

  [[nodiscard]] bool is(dev_t device, ino_t inode) const noexcept {
    return device_ == device && inode_ == inode;
  }
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Keeps the bytes that are about to be written over, as far as the file had any and they have
  /// not been kept yet. Throws StatementError where that is not possible.
  void keep(std::uint64_t begin, std::uint64_t end, KeptBytes& kept);

  /// The file is to be cut to that length at the statement's end; not before, so that nothing needs
  /// to be kept of what is cut off.
  void cut(std::uint64_t length) noexcept { length_ = length; }
  [[nodiscard]] std::uint64_t old_length() const noexcept { return old_length_; }

  /// 0, or errno.
  int finish() const noexcept;
  int put_back(KeptBytes& kept) const noexcept;

 private:
  struct Part {
    std::uint64_t address;
    std::size_t count;
    std::uint64_t offset;  // in the spool
  };

  void keep_gap(std::uint64_t begin, std::uint64_t end, KeptBytes& kept);
  void mark_kept(std::uint64_t begin, std::uint64_t end);
  int remove_new() const noexcept;

  int descriptor_;
  std::string path_;
  bool is_new_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
  std::uint64_t old_length_ = 0;
  std::optional<std::uint64_t> length_;            // to be cut to
  std::map<std::uint64_t, std::uint64_t> ranges_;  // kept, from begin to end; none touch
  std::vector<Part> parts_;
};

/// All that the statement changes.
class Undo {
 public:
  /// The file, if the statement opened it for writing before; else null.
  ChangedFile* find(dev_t device, ino_t inode) const noexcept;

  /// Throws std::bad_alloc.
  ChangedFile* add(int descriptor, const std::string& path, bool is_new);

  void keep(ChangedFile& file, std::uint64_t begin, std::uint64_t end) {
    file.keep(begin, end, kept_);
  }

  /// Lets the changes be. Throws where a file cannot be cut.
  void finish();

  /// Makes all files what they were, and removes those that are new. Nothing where that went well.
  std::optional<StatementError> put_back() noexcept;

 private:
  std::vector<std::unique_ptr<ChangedFile>> files_;
  KeptBytes kept_;
};

}  // namespace kelvo
