// Follows what datasets take from other files before the HDF5 library does.
#include "storage/sources.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

#include "storage/check.h"
#include "storage/file.h"
#include "storage/object.h"
#include "storage/reach.h"
#include "storage/remote.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t deepest_chain = 16;
constexpr std::size_t longest_name = std::size_t{64} * 1024;  // of a raw data file
constexpr const char* own_directory = "${ORIGIN}";            // the HDF5 library's word for it

std::string cannot_open(const std::string& shown) { return shown + " cannot be opened"; }

// The HDF5 library would look for what a remote file names on this machine.
void check_not_remote(hid_t dataset, const std::string& name, const Namer& namer) {
  if (!is_remote(file_name(dataset))) return;
  throw StatementError(Status::not_available, namer.shown + " takes data from " + quoted(name) +
                                                  ", which is not followed from a remote file; "
                                                  "copy both to this machine");
}

// --- external raw data ---

std::string raw_file_name(hid_t creation, unsigned index, const std::string& shown) {
  std::string name(longest_name, '\0');
  off_t offset = 0;
  hsize_t size = 0;
  check_done(H5Pget_external(creation, index, name.size() - 1, name.data(), &offset, &size),
             [&shown] { return cannot_open(shown); });
  name.resize(name.find('\0'));
  return name;
}

// The HDF5 library looks for all raw data files of a dataset in one directory: the prefix where
// the first of them is there, else the dataset's own.
bool is_below_prefix(hid_t creation, const std::string& shown) {
  std::error_code error;
  return !reach_prefix().empty() &&
         fs::exists(fs::path(reach_prefix()) / raw_file_name(creation, 0, shown), error);
}

void check_raw_files(hid_t dataset, hid_t creation, const fs::path& folder, const Namer& namer) {
  const auto count = static_cast<unsigned>(H5Pget_external_count(creation));
  check_not_remote(dataset, raw_file_name(creation, 0, namer.shown), namer);
  for (unsigned i = 0; i < count; ++i)
    check_named((folder / raw_file_name(creation, i, namer.shown)).string(), namer);
}

// For a source of a virtual dataset it looks in the working directory, whatever it is told.
void check_found_raw_files(hid_t creation, const Namer& namer) {
  const auto count = static_cast<unsigned>(H5Pget_external_count(creation));
  std::error_code error;
  if (fs::equivalent(fs::current_path(error), namer.folder, error)) return;
  for (unsigned i = 0; i < count; ++i) {
    const std::string name = raw_file_name(creation, i, namer.shown);
    if (fs::path(name).is_absolute()) continue;
    throw StatementError(Status::not_available,
                         namer.shown + " keeps its data in " + quoted(name) +
                             " beside its file, where the HDF5 library does not look for it (USE "
                             "DIRECTORY " +
                             quoted(namer.folder) + " goes there)");
  }
}

// --- virtual datasets ---

// One of the names of a mapping, which the library gives its length of first.
template <typename Get>
std::string mapping_name(Get get, hid_t creation, std::size_t index, const std::string& shown) {
  const ssize_t length = get(creation, index, nullptr, 0);
  if (length < 0) fail_hdf5(cannot_open(shown));
  std::string name(static_cast<std::size_t>(length), '\0');
  get(creation, index, name.data(), name.size() + 1);
  return name;
}

// `name` with the number of a block in the place of "%b"; "%%" stands for one "%".
std::string numbered(const std::string& name, std::size_t block) {
  std::string text;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char next = i + 1 < name.size() ? name[i + 1] : '\0';
    if (name[i] != '%' || (next != 'b' && next != '%')) {
      text += name[i];
      continue;
    }
    text += next == 'b' ? std::to_string(block) : "%";
    ++i;
  }
  return text;
}

bool has_block_number(const std::string& name) { return numbered(name, 0) != numbered(name, 1); }

// Goes through the sources of a virtual dataset, and through theirs.
class SourceWalk {
 public:
  explicit SourceWalk(std::vector<FileHandle>& opened) : opened_(opened) {}

  void check_virtual(hid_t dataset, hid_t creation, const std::string& shown);

 private:
  using Identity = std::pair<unsigned long, haddr_t>;

  void check_mapping(hid_t dataset, const std::string& file, const std::string& source,
                     const Namer& namer);
  bool check_source(hid_t dataset, const std::string& file, const std::string& source,
                    const Namer& namer);
  void check_found(hid_t source, const std::string& shown);
  hid_t open_once(const std::string& path, Access access);
  bool enter(hid_t dataset, const std::string& shown);

  std::vector<FileHandle>& opened_;
  std::map<std::string, std::size_t> by_path_;  // in opened_
  std::vector<Identity> chain_;                 // virtual datasets, each a source of the one before
  std::set<Identity> checked_;
};

// False where it was checked already; throws where reading it would not end.
bool SourceWalk::enter(hid_t dataset, const std::string& shown) {
  H5O_info_t info;
  check_done(H5Oget_info2(dataset, &info, H5O_INFO_BASIC), [&shown] { return cannot_open(shown); });
  const Identity identity{info.fileno, info.addr};
  if (std::find(chain_.begin(), chain_.end(), identity) != chain_.end())
    throw StatementError(Status::hdf5_refused, shown + " is a source of itself");
  if (chain_.size() > deepest_chain) {
    throw StatementError(Status::hdf5_refused,
                         shown + " is the source of a source, and so on, more than " +
                             std::to_string(deepest_chain) + " times");
  }
  if (!checked_.insert(identity).second) return false;
  chain_.push_back(identity);
  return true;
}

void SourceWalk::check_virtual(hid_t dataset, hid_t creation, const std::string& shown) {
  if (!enter(dataset, shown)) return;
  const Namer namer = namer_of(dataset, shown);
  std::size_t mappings = 0;
  check_done(H5Pget_virtual_count(creation, &mappings), [&shown] { return cannot_open(shown); });
  std::set<std::pair<std::string, std::string>> seen;
  for (std::size_t i = 0; i < mappings; ++i) {
    const std::string file = mapping_name(H5Pget_virtual_filename, creation, i, shown);
    const std::string source = mapping_name(H5Pget_virtual_dsetname, creation, i, shown);
    if (seen.emplace(file, source).second) check_mapping(dataset, file, source, namer);
  }
  chain_.pop_back();
}

void SourceWalk::check_mapping(hid_t dataset, const std::string& file, const std::string& source,
                               const Namer& namer) {
  std::size_t block = 0;
  const bool many = has_block_number(file) || has_block_number(source);
  // The HDF5 library too stops at the first block that is not there.
  while (check_source(dataset, numbered(file, block), numbered(source, block), namer) && many)
    ++block;
}

// Whether the source is there.
bool SourceWalk::check_source(hid_t dataset, const std::string& file, const std::string& source,
                              const Namer& namer) {
  // A source without a file of its own is in the dataset's; its path begins at the root either way.
  const FileHandle own_file(
      check_id(H5Iget_file_id(dataset), [&namer] { return cannot_open(namer.shown); }));
  hid_t source_file = own_file.get();
  if (file != "." && !file.empty()) {
    check_not_remote(dataset, file, namer);
    const std::string found = find_named(file, namer, Fallback::working_directory);
    if (found.empty()) return false;
    source_file = open_once(found, access_of(dataset));
  }
  const PropertyHandle access = dataset_access();
  const DatasetHandle opened(H5Dopen2(source_file, source.c_str(), access.get()));
  if (!opened) {
    throw_left_error();
    return false;
  }
  check_found(opened.get(), "Dataset " + quoted(source) + " (a source of " + namer.shown + ")");
  return true;
}

void SourceWalk::check_found(hid_t source, const std::string& shown) {
  const PropertyHandle creation(
      check_id(H5Dget_create_plist(source), [&shown] { return cannot_open(shown); }));
  if (H5Pget_layout(creation.get()) == H5D_VIRTUAL) {
    check_virtual(source, creation.get(), shown);
    return;
  }
  if (H5Pget_external_count(creation.get()) <= 0) return;
  const Namer namer = namer_of(source, shown);
  check_raw_files(source, creation.get(), namer.folder, namer);
  check_found_raw_files(creation.get(), namer);
}

hid_t SourceWalk::open_once(const std::string& path, Access access) {
  const auto [known, is_new] = by_path_.emplace(path, opened_.size());
  if (is_new) opened_.push_back(open_file(path, access, reach_options()));
  return opened_[known->second].get();
}

// --- opening ---

void set_prefixes(hid_t list, const char* raw_data) {
  const auto what = [] { return std::string("The access to a dataset cannot be set"); };
  check_done(H5Pset_efile_prefix(list, raw_data), what);
  if (!reach_prefix().empty())
    check_done(H5Pset_virtual_prefix(list, reach_prefix().c_str()), what);
}

// Opens the dataset again with the prefixes, as those of an open one cannot be changed; the rest of
// its access list stays.
DatasetHandle opened_again(DatasetHandle dataset, const char* raw_data, const std::string& shown) {
  const auto what = [&shown] { return cannot_open(shown); };
  const FileHandle file(check_id(H5Iget_file_id(dataset.get()), what));
  const PropertyHandle access(check_id(H5Dget_access_plist(dataset.get()), what));
  const std::string path = object_path(dataset.get());
  set_prefixes(access.get(), raw_data);
  dataset.reset();
  return DatasetHandle(check_id(H5Dopen2(file.get(), path.c_str(), access.get()), what));
}

}  // namespace

PropertyHandle dataset_access() {
  PropertyHandle list(check_id(H5Pcreate(H5P_DATASET_ACCESS), [] {
    return std::string("The access to a dataset cannot be set");
  }));
  set_prefixes(list.get(), own_directory);
  return list;
}

SourcedDataset within_reach(DatasetHandle dataset, const std::string& shown) {
  SourcedDataset result;
  const PropertyHandle creation(
      check_id(H5Dget_create_plist(dataset.get()), [&shown] { return cannot_open(shown); }));
  const char* raw_data = own_directory;
  if (H5Pget_layout(creation.get()) == H5D_VIRTUAL) {
    SourceWalk(result.sources).check_virtual(dataset.get(), creation.get(), shown);
  } else if (H5Pget_external_count(creation.get()) > 0) {
    const Namer namer = namer_of(dataset.get(), shown);
    const bool prefixed = is_below_prefix(creation.get(), shown);
    if (prefixed) raw_data = reach_prefix().c_str();
    check_raw_files(dataset.get(), creation.get(), prefixed ? reach_prefix() : namer.folder, namer);
  } else {
    result.dataset = std::move(dataset);
    return result;
  }
  result.dataset = opened_again(std::move(dataset), raw_data, shown);
  return result;
}

}  // namespace kelvo
