// The life of a session and the road of one statement through it.
#include "session.h"

#include <algorithm>
#include <new>
#include <thread>

#include "statements/family.h"
#include "storage/array_conversion.h"
#include "storage/check.h"
#include "storage/crash_guard.h"
#include "storage/driver.h"
#include "storage/external_link.h"
#include "storage/lock.h"
#include "storage/lzf_filter.h"
#include "storage/object.h"
#include "storage/reach.h"
#include "storage/temporary_name.h"

namespace kelvo {
namespace {

// The prompt of the program holds a path of this many bytes and no more.
constexpr std::size_t longest_group_path = 1022;

}  // namespace

int default_threads() noexcept {
  const unsigned processors = std::thread::hardware_concurrency();
  return static_cast<int>(std::clamp(processors, 1U, static_cast<unsigned>(most_threads)));
}

Session::Session(Cursor& cursor) : result_(cursor) {}

void Session::start_hdf5() {
  if (hdf5_started_) return;
  hdf5_started_ = true;
  skip_work_at_exit();
  take_over_locking();
  guard_reach(settings_.file_options, settings_.external_link_prefix);
  silence_hdf5();
  register_lzf_filter();
  mend_array_conversion();
}

Session::~Session() {
  run_guarded([this] {
    result_.clear();
    files_.clear();
  });
}

// Rows of a file, which may turn out to be damaged with each block that is read.
class Session::GuardedRows : public RowSource {
 public:
  GuardedRows(Session& session, Answer rows) : session_(session), rows_(std::move(rows)) {}
  GuardedRows(const GuardedRows&) = delete;
  GuardedRows& operator=(const GuardedRows&) = delete;
  ~GuardedRows() override {
    if (!run_guarded([this] { rows_.reset(); })) give_up();
  }

  bool next(Block& block) override {
    bool found = false;
    if (!run_guarded([&] { found = rows_->next(block); })) throw give_up();
    return found;
  }

  std::optional<std::uint64_t> look_through(std::size_t most_bytes) override {
    std::optional<std::uint64_t> seen;
    if (!run_guarded([&] { seen = rows_->look_through(most_bytes); })) throw give_up();
    return seen;
  }

 private:
  // What the rows own may be in any state.
  StatementError give_up() {
    static_cast<void>(rows_.release());
    return session_.give_up_damaged();
  }

  Session& session_;
  Answer rows_;
};

Status Session::execute(const char* statement) {
  status_before_ = status_;
  status_ = 0;
  message_.clear();
  position_ = 0;
  result_.reset();
  if (settings_.debug) log_.emplace(statement);
  if (!run_guarded([&] { run(statement); })) {
    const StatementError error = give_up_damaged();
    result_.give_up();
    if (status_ == 0) fail(error);
    add_failure(undo_changes());
  }
  if (log_) log_->show_end(static_cast<Status>(status_), result_.elements());
  log_.reset();
  return static_cast<Status>(status_);
}

void Session::run(const char* statement) {
  try {
    Parser parser(statement);
    // A line with a comment alone, as in scripts, is nothing to do.
    if (!parser.at_end()) {
      Answer answer = run_form(statement_families(), parser, *this);
      if (answer != nullptr) answer = std::make_unique<GuardedRows>(*this, std::move(answer));
      result_.start(std::move(answer));
    }
    close_written();
    keep_changes();
  } catch (const StatementError& error) {
    fail(error);
  } catch (const std::bad_alloc&) {
    fail(StatementError(Status::no_memory, "There is not enough memory for the statement"));
  } catch (const std::length_error&) {
    // A size from a damaged file, more than memory could ever hold.
    fail(StatementError(Status::no_memory, "There is not enough memory for the statement"));
  }
  if (status_ != 0) {
    // The cause of whatever else went wrong; not all of that carries it.
    if (const std::optional<StatementError> failure = write_failure()) fail(*failure);
    take_back();
  }
}

// All or nothing: whatever a failed statement wrote is undone.
void Session::take_back() {
  result_.clear();
  drop_changes();
  try {
    close_written();
  } catch (const StatementError&) {
    // The statement has failed already; the first reason is the one to show.
  }
  add_failure(undo_changes());
}

// What could not be undone is said behind the reason for undoing it.
void Session::add_failure(const std::optional<StatementError>& failure) {
  if (failure) message_ += std::string(" (") + failure->what() + ")";
}

// The HDF5 library was left in the middle of a call, with a file that it does not survive. Nothing
// that it has open is touched again: not even to close it. Files in use stay so, and are opened
// again when they are needed.
StatementError Session::give_up_damaged() {
  const std::string file = give_up_files();
  for (UsedFile& used : files_) {
    static_cast<void>(used.handle.release());
    used.access = Access::read;
  }
  for (WrittenFile& written : written_) static_cast<void>(written.handle.release());
  written_.clear();
  forget_followed_links();
  remove_temporary_names();
  if (const std::optional<StatementError> failure = write_failure()) return *failure;
  return StatementError(Status::hdf5_refused, (file.empty() ? "A file" : "File " + quoted(file)) +
                                                  " is damaged: it says more than there is of it");
}

void Session::fail(const StatementError& error) noexcept {
  status_ = static_cast<std::int32_t>(error.status());
  position_ = error.position();
  message_ = error.what();
}

std::vector<Session::UsedFile>::iterator Session::find_used(const std::string& path) {
  return std::find_if(files_.begin(), files_.end(),
                      [&path](const UsedFile& file) { return file.path == path; });
}

void Session::use_file(const std::string& path, bool read_only) {
  const auto used = find_used(path);
  if (used != files_.end()) {
    used->group = "/";
    used->read_only = read_only;
    std::rotate(used, used + 1, files_.end());
    return;
  }
  UsedFile file;
  file.path = path;
  file.read_only = read_only;
  file.options = settings_.file_options;
  file.handle = open_file(path, Access::read, file.options);
  files_.push_back(std::move(file));
}

void Session::close_file() {
  if (files_.empty()) throw StatementError(Status::nothing_in_use, "No file is in use");
  files_.pop_back();
}

void Session::close_file(const std::string& path) {
  const auto used = find_used(path);
  if (used == files_.end())
    throw StatementError(Status::nothing_in_use, "File " + quoted(path) + " is not in use");
  files_.erase(used);
}

void Session::close_all_files() { files_.clear(); }

bool Session::is_in_use(const std::string& path) const {
  return std::any_of(files_.begin(), files_.end(),
                     [&path](const UsedFile& file) { return file.path == path; });
}

std::vector<std::string> Session::used_files() const {
  std::vector<std::string> paths;
  for (auto file = files_.rbegin(); file != files_.rend(); ++file) paths.push_back(file->path);
  return paths;
}

const std::string* Session::used_group() const {
  return files_.empty() ? nullptr : &files_.back().group;
}

void Session::use_group(const std::string& path) {
  if (path.size() > longest_group_path) {
    throw StatementError(Status::out_of_range, "The path of the group has " +
                                                   std::to_string(path.size()) +
                                                   " bytes, USE GROUP takes at most " +
                                                   std::to_string(longest_group_path));
  }
  open_group(file_in_use(Access::read), path);
  files_.back().group = path;
}

hid_t Session::open_used(UsedFile& file, Access access) {
  if (access == Access::write && file.read_only) {
    throw StatementError(
        Status::host_refused,
        "File " + quoted(file.path) + " is in use READ ONLY (USE FILE opens it for writing too)");
  }
  if (file.handle && (access == Access::read || file.access == Access::write))
    return file.handle.get();
  file.handle.reset();
  file.handle = open_file(file.path, access, file.options);
  file.access = access;
  return file.handle.get();
}

void Session::close_written() {
  std::optional<StatementError> failure;
  const auto close = [&failure](const std::string& path, FileHandle* handle) {
    try {
      check_done(handle->reset(),
                 [&path] { return "File " + quoted(path) + " cannot be written"; });
    } catch (const StatementError& error) {
      if (!failure) failure = error;
    }
  };
  const H5F_scope_t scope = settings_.flush == Flush::local ? H5F_SCOPE_LOCAL : H5F_SCOPE_GLOBAL;
  for (UsedFile& file : files_) {
    if (!file.handle || file.access == Access::read) continue;
    file.access = Access::read;
    // Should it fail, closing fails too and says so.
    if (settings_.flush != Flush::disable) H5Fflush(file.handle.get(), scope);
    close(file.path, &file.handle);
  }
  for (WrittenFile& file : written_) close(file.path, &file.handle);
  written_.clear();
  if (failure) throw StatementError(*failure);
}

hid_t Session::file_in_use(Access access) {
  if (files_.empty())
    throw StatementError(Status::nothing_in_use, "No file is in use (USE FILE opens one)");
  return open_used(files_.back(), access);
}

void Session::understood(std::string_view keywords) {
  if (log_) log_->add_form(keywords);
}

Target Session::find(const ObjectName& name, Access access) {
  Target target = find_quietly(name, access);
  if (log_) log_->show_object(target.shown(), file_name(target.file));
  return target;
}

Target Session::find_quietly(const ObjectName& name, Access access) {
  Target target;
  target.attribute = name.attribute;
  if (!name.file) {
    target.file = file_in_use(access);
    target.path = absolute_path(files_.back().group, name.path);
    return target;
  }
  const std::string path = host_path(*name.file);
  const auto used = find_used(path);
  if (used != files_.end()) {
    target.file = open_used(*used, access);
  } else {
    FileHandle opened = open_file(path, access, settings_.file_options);
    target.file = opened.get();
    if (access == Access::read) {
      target.opened = std::move(opened);
    } else {
      written_.push_back({path, std::move(opened)});
    }
  }
  target.path = absolute_path("/", name.path);
  return target;
}

}  // namespace kelvo
