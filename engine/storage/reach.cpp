// Which file a name means, and whether it may be followed.
#include "storage/reach.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#include "error.h"
#include "storage/external_link.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

// How links are followed is a matter of the process, as the HDF5 library's table of link classes
// is.
const FileOptions* the_options = nullptr;
const std::string* the_prefix = nullptr;

// These would have the HDF5 library look in places that the rule knows nothing of.
constexpr std::array undermining = {"HDF5_EXT_PREFIX", "HDF5_EXTFILE_PREFIX", "HDF5_VDS_PREFIX"};

bool is_below(const fs::path& file, const fs::path& folder) {
  std::error_code error;
  const fs::path real_folder = fs::canonical(folder, error);
  if (error) return false;
  const auto [end, rest] =
      std::mismatch(real_folder.begin(), real_folder.end(), file.begin(), file.end());
  return end == real_folder.end();
}

void check_reach(const fs::path& file, const Namer& namer) {
  if (is_below(file, namer.folder)) return;
  if (!the_prefix->empty() && is_below(file, *the_prefix)) return;
  throw StatementError(Status::host_refused,
                       namer.shown + " reaches for " + quoted(file.string()) +
                           ", outside the directory of its file (SET EXTERNAL LINK PREFIX " +
                           quoted(file.parent_path().string()) + " allows that)");
}

// The file as it really is; it may be reached, and is one that can be read without waiting.
std::string checked(const fs::path& file, const Namer& namer) {
  std::error_code error;
  const fs::path real = fs::canonical(file, error);
  if (error) {
    throw StatementError(
        Status::does_not_exist,
        namer.shown + " reaches for " + quoted(file.string()) + ": " + error.message());
  }
  check_reach(real, namer);
  if (!fs::is_regular_file(real, error)) {
    throw StatementError(Status::wrong_kind, namer.shown + " reaches for " + quoted(real.string()) +
                                                 ", which is not a regular file");
  }
  return real.string();
}

bool is_there(const fs::path& place) {
  std::error_code error;
  return fs::exists(fs::symlink_status(place, error));
}

// Where a name may lead, in the order in which the HDF5 library looks.
std::vector<fs::path> candidates(const fs::path& name, const fs::path& folder, Fallback fallback) {
  std::vector<fs::path> places;
  if (name.is_absolute()) places.push_back(name);
  const fs::path relative = name.is_absolute() ? name.filename() : name;
  if (!the_prefix->empty()) places.push_back(fs::path(*the_prefix) / relative);
  places.push_back(folder / relative);
  std::error_code error;
  if (fallback == Fallback::working_directory) places.push_back(fs::current_path(error) / relative);
  return places;
}

}  // namespace

void guard_reach(const FileOptions& options, const std::string& external_link_prefix) {
  the_options = &options;
  the_prefix = &external_link_prefix;
  // The HDF5 library reads them once, when it starts.
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the engine runs on one thread
  for (const char* name : undermining) ::unsetenv(name);
  guard_external_links();
}

const FileOptions& reach_options() noexcept { return *the_options; }
const std::string& reach_prefix() noexcept { return *the_prefix; }

Namer namer_of(hid_t object, std::string shown) {
  return {std::move(shown), fs::path(file_name(object)).parent_path().string()};
}

std::string find_named(const std::string& name, const Namer& namer, Fallback fallback) {
  for (const fs::path& place : candidates(name, namer.folder, fallback)) {
    if (is_there(place)) return checked(place, namer);
  }
  return "";
}

void check_named(const std::string& place, const Namer& namer) {
  if (is_there(place)) {
    checked(place, namer);
    return;
  }
  std::error_code error;
  check_reach(fs::weakly_canonical(place, error), namer);
}

}  // namespace kelvo
