// What lives between statements: files and group in use, settings, the last result and the last
// error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "answers/result.h"
#include "debug.h"
#include "language/parser.h"
#include "storage/chunk_cache.h"
#include "storage/file.h"
#include "storage/handle.h"

namespace kelvo {

constexpr int most_threads = 256;

/// One for each processor, at most most_threads.
int default_threads() noexcept;

enum class Flush { disable, local, global };

/// What SET sets. A new process begins with what stands here.
struct Settings {
  bool debug = false;
  FileOptions file_options;
  std::string external_link_prefix;  // an absolute directory that files may reach too; "" for none
  ChunkCache chunk_cache;
  Flush flush = Flush::disable;  // of a file that was written, at the end of the statement
  int threads = default_threads();
};

/// An object that a statement names, found: the open file that it is in, and its path there.
struct Target {
  FileHandle opened;  // the file, where it was opened for this statement alone, for reading
  hid_t file = H5I_INVALID_HID;
  std::string path;  // absolute
  std::optional<std::string> attribute;

  /// As messages show it: path, or path@attribute.
  [[nodiscard]] std::string shown() const { return attribute ? path + "@" + *attribute : path; }
};

class Session {
 public:
  /// `cursor` walks the results, and must outlive the session.
  explicit Session(Cursor& cursor);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  /// Runs one statement and keeps its result; throws nothing but what leaves no way to report (see
  /// api.cpp).
  Status execute(const char* statement);

  // --- for the statement families ---

  /// Starts the HDF5 library, where that has not been done. Before, nothing of it is called.
  void start_hdf5();

  Settings& settings() noexcept { return settings_; }
  [[nodiscard]] std::int32_t status_before() const noexcept { return status_before_; }

  /// Puts the file in use, opening it first where it is not yet. `path` is absolute.
  void use_file(const std::string& path, bool read_only);
  /// Takes the file in use, or the named one, out of use; the file used before it is in use then.
  void close_file();
  void close_file(const std::string& path);
  void close_all_files();
  [[nodiscard]] bool is_in_use(const std::string& path) const;
  /// Absolute paths of the files in use, the one named last first.
  [[nodiscard]] std::vector<std::string> used_files() const;

  /// Absolute path of the group in use, or null when no file is in use.
  [[nodiscard]] const std::string* used_group() const;
  void use_group(const std::string& path);

  /// The file in use, open for the access. Throws nothing_in_use where there is none. Between
  /// statements no file is left open for writing, so that a program that ends at any time leaves
  /// whole files and takes no lock while it waits.
  hid_t file_in_use(Access access);

  /// Finds what `name` means: its file is opened where it is not in use. Nothing is looked up in
  /// the file.
  Target find(const ObjectName& name, Access access);

  /// Notes words of the statement's form, for debug output.
  void understood(std::string_view keywords);

  // --- for api.cpp ---

  Result& result() noexcept { return result_; }
  [[nodiscard]] const std::string& message() const noexcept { return message_; }
  [[nodiscard]] std::int32_t position() const noexcept { return position_; }

  /// Records a failure as that of the last statement.
  void fail(const StatementError& error) noexcept;

 private:
  struct UsedFile {
    std::string path;
    std::string group = "/";
    bool read_only = false;
    FileOptions options;  // as they were when it was put in use
    FileHandle handle;    // empty between a statement that wrote and the next that needs the file
    Access access = Access::read;
  };

  class GuardedRows;

  struct WrittenFile {
    std::string path;
    FileHandle handle;
  };

  void run(const char* statement);
  void take_back();
  void add_failure(const std::optional<StatementError>& failure);
  void close_written();
  StatementError give_up_damaged();
  std::vector<UsedFile>::iterator find_used(const std::string& path);
  static hid_t open_used(UsedFile& file, Access access);
  Target find_quietly(const ObjectName& name, Access access);

  Settings settings_;
  bool hdf5_started_ = false;
  std::vector<UsedFile> files_;       // the one in use last
  std::vector<WrittenFile> written_;  // for this statement alone
  Result result_;
  std::string message_;
  std::int32_t position_ = 0;
  std::int32_t status_ = 0;
  std::int32_t status_before_ = 0;
  std::optional<StatementLog> log_;  // while a statement runs that is to be shown
};

}  // namespace kelvo
