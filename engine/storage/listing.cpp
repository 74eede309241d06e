// Walking the links of groups and the attributes of objects. A walk keeps the groups on its way
// open and asks each for its members by their names, so that no path is looked up from the root.
#include "storage/listing.h"

#include <algorithm>
#include <list>
#include <map>
#include <optional>
#include <unordered_set>

#include "storage/check.h"
#include "storage/entries.h"
#include "storage/file.h"
#include "storage/object.h"

namespace kelvo {
namespace {

// An object, the same under whatever name it is found.
struct Identity {
  unsigned file;  // the walk's own number of the file
  haddr_t address;

  bool operator==(const Identity&) const = default;
};

struct IdentityHash {
  std::size_t operator()(const Identity& identity) const noexcept {
    return std::hash<haddr_t>()(identity.address ^ (haddr_t{identity.file} << 48U));
  }
};

// The objects that a walk has come to.
class SeenObjects {
 public:
  /// Whether it is new. `links` is the number of hard links to it: an object with only one cannot
  /// be met twice on a walk through hard links, so that it is merely noted, which is much faster.
  bool add(const Identity& object, unsigned links) {
    if (links > 1 || all_known_) return known_.insert(object).second;
    noted_.push_back(object);
    return true;
  }

  /// To be called before links that are not counted are followed.
  void know_all() {
    known_.insert(noted_.begin(), noted_.end());
    noted_ = {};
    all_known_ = true;
  }

 private:
  std::unordered_set<Identity, IdentityHash> known_;
  std::vector<Identity> noted_;
  bool all_known_ = false;
};

// Holds the metadata cache of a file at a steady size while it lives. A walk comes to most things
// once: a cache that grows with what it meets, as the HDF5 library's does by itself, costs time and
// memory, five times its size, and is never hit. Only the index of a group is looked at for each of
// its members.
class SteadyMetadataCache {
 public:
  explicit SteadyMetadataCache(hid_t file) : file_(file) {
    before_.version = H5AC__CURR_CACHE_CONFIG_VERSION;
    check_done(H5Fget_mdc_config(file_, &before_), cannot_set);
    set_size(least_bytes);
  }
  SteadyMetadataCache(const SteadyMetadataCache&) = delete;
  SteadyMetadataCache& operator=(const SteadyMetadataCache&) = delete;
  ~SteadyMetadataCache() { H5Fset_mdc_config(file_, &before_); }

  /// Makes it large enough for the index of a group with that many members.
  void make_room_for_index(std::size_t members) {
    constexpr std::size_t bytes_for_each = 48;
    const std::size_t bytes = std::min(members, before_.max_size / bytes_for_each) * bytes_for_each;
    if (bytes > bytes_) set_size(bytes);
  }

 private:
  static constexpr std::size_t least_bytes = std::size_t{512} * 1024;
  static std::string cannot_set() { return "The metadata cache cannot be set"; }

  void set_size(std::size_t bytes) {
    H5AC_cache_config_t steady = before_;
    steady.set_initial_size = true;
    steady.initial_size = steady.min_size = bytes;
    steady.incr_mode = H5C_incr__off;
    steady.decr_mode = H5C_decr__off;
    check_done(H5Fset_mdc_config(file_, &steady), cannot_set);
    bytes_ = bytes;
  }

  hid_t file_;
  H5AC_cache_config_t before_{};
  std::size_t bytes_ = 0;
};

// Numbers files by their names: the HDF5 library's own numbers change whenever a file is opened
// again, which a walk through external links does.
class FileNumbers {
 public:
  explicit FileNumbers(hid_t object) { number_of(object); }

  unsigned number_of(hid_t object) {
    return numbers_.try_emplace(file_name(object), static_cast<unsigned>(numbers_.size()))
        .first->second;
  }

 private:
  std::map<std::string, unsigned> numbers_;
};

class Walk {
 public:
  Walk(hid_t file, const std::string& group, const ListingRequest& request)
      : request_(request),
        root_path_(group),
        root_(open_group(file, group)),
        cache_(file),
        files_(root_.get()) {}

  std::string run() {
    const H5O_info_t info = check_info(root_.get(), ".", root_path_);
    root_file_number_ = info.fileno;
    seen_.add({0, info.addr}, info.rc);
    listed_.add({0, info.addr}, info.rc);
    descend(0, "", ".", H5I_INVALID_HID);
    walk();
    follow_links();
    std::string paths = std::move(found_.front());
    for (found_.pop_front(); !found_.empty(); found_.pop_front()) paths += found_.front();
    return paths;
  }

 private:
  using Place = std::list<std::string>::iterator;

  // A group on the way down.
  struct Level {
    GroupHandle group;
    unsigned file = 0;
    std::string prefix;  // of its members' paths
    std::vector<Entry> entries;
    std::size_t next = 0;
  };

  // A soft or external link that is followed once all that hard links lead to is known.
  struct Deferred {
    Place place;
    std::string name;
    std::string path;
  };

  [[nodiscard]] std::string shown(const std::string& path) const {
    return (root_path_ == "/" ? "/" : root_path_ + "/") + path;
  }

  static std::optional<H5O_info_t> info_of(hid_t group, const std::string& name) {
    H5O_info_t info;
    if (H5Oget_info_by_name2(group, name.c_str(), &info, H5O_INFO_BASIC, H5P_DEFAULT) < 0)
      return std::nullopt;
    return info;
  }

  [[nodiscard]] static H5O_info_t check_info(hid_t group, const std::string& name,
                                             const std::string& shown) {
    const std::optional<H5O_info_t> info = info_of(group, name);
    if (!info) fail_hdf5("Object " + quoted(shown) + " cannot be read");
    return *info;
  }

  // Goes into the group that `name` names from the open group (the root of the walk if invalid).
  void descend(unsigned file, std::string prefix, const std::string& name, hid_t group) {
    const auto what = [this, &prefix] {
      return "Group " + quoted(prefix.empty() ? root_path_ : shown(prefix)) + " cannot be read";
    };
    Level level;
    const hid_t from = group < 0 ? root_.get() : group;
    level.group = GroupHandle(check_id(H5Gopen2(from, name.c_str(), H5P_DEFAULT), what));
    level.file = file;
    H5G_info_t size;
    check_done(H5Gget_info(level.group.get(), &size), what);
    cache_.make_room_for_index(static_cast<std::size_t>(size.nlinks));
    check_done(read_links(level.group.get(), &level.entries), what);
    if (request_.by_order) sort_by_creation(&level.entries);
    if (!prefix.empty()) prefix += '/';
    level.prefix = std::move(prefix);
    levels_.push_back(std::move(level));
  }

  // Levels are kept in a list of their own instead of the call stack: a file may nest its groups as
  // deeply as it likes.
  void walk() {
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.entries.size()) {
        levels_.pop_back();
        continue;
      }
      const Entry& entry = level.entries[level.next++];
      entry.type == H5L_TYPE_HARD ? take_object(level, entry) : take_link(level, entry);
    }
  }

  [[nodiscard]] bool is_wanted(H5O_type_t type) const {
    return (type == H5O_TYPE_GROUP && request_.kind == MemberKind::group) ||
           (type == H5O_TYPE_DATASET && request_.kind == MemberKind::dataset);
  }

  [[nodiscard]] bool is_wanted(H5L_type_t type) const {
    return (type == H5L_TYPE_SOFT && request_.kind == MemberKind::soft_link) ||
           (type == H5L_TYPE_EXTERNAL && request_.kind == MemberKind::external_link);
  }

  [[nodiscard]] bool is_named(const std::string& name, const std::string& path) const {
    return !request_.is_named || request_.is_named(name, path);
  }

  void list(hid_t group, const std::string& name_there, const std::string& path) {
    if (!request_.is_chosen || request_.is_chosen(group, name_there))
      place_->append(path.c_str(), path.size() + 1);
  }

  void take_object(const Level& level, const Entry& entry) {
    const std::string path = level.prefix + entry.name;
    const bool named = is_named(entry.name, path);
    const bool lists_links =
        request_.kind == MemberKind::soft_link || request_.kind == MemberKind::external_link;
    if (!request_.recursive && (!named || lists_links)) return;
    const hid_t group = level.group.get();
    const H5O_info_t info = check_info(group, entry.name, shown(path));
    if (named && is_wanted(info.type) &&
        (!request_.recursive || listed_.add({level.file, info.addr}, info.rc)))
      list(group, entry.name, path);
    if (request_.recursive && info.type == H5O_TYPE_GROUP &&
        seen_.add({level.file, info.addr}, info.rc))
      descend(level.file, path, entry.name, group);
  }

  void take_link(const Level& level, const Entry& entry) {
    const std::string path = level.prefix + entry.name;
    const bool named = is_named(entry.name, path);
    if (named && is_wanted(entry.type)) list(level.group.get(), entry.name, path);
    if (request_.recursive) {
      // What it leads to comes here, and what follows behind that.
      place_ = found_.emplace(std::next(place_));
      deferred_.push_back({place_, entry.name, path});
      place_ = found_.emplace(std::next(place_));
    } else if (named &&
               (request_.kind == MemberKind::group || request_.kind == MemberKind::dataset)) {
      const std::optional<H5O_info_t> info = info_of(level.group.get(), entry.name);
      if (info && is_wanted(info->type)) list(level.group.get(), entry.name, path);
    }
  }

  // Following one link may defer others, behind those that wait already.
  void follow_links() {
    if (!deferred_.empty()) {
      seen_.know_all();
      listed_.know_all();
    }
    for (; !deferred_.empty(); deferred_.pop_front()) {
      place_ = deferred_.front().place;
      follow(deferred_.front());
      walk();
    }
  }

  void follow(const Deferred& link) {
    const std::optional<H5O_info_t> info = info_of(root_.get(), link.path);
    if (!info) return;
    // Opened, so that the file stays open until it is numbered and its group is.
    const ObjectHandle object(H5Oopen(root_.get(), link.path.c_str(), H5P_DEFAULT));
    if (!object) return;
    const unsigned file = info->fileno == root_file_number_ ? 0 : files_.number_of(object.get());
    if (is_named(link.name, link.path) && is_wanted(info->type) &&
        listed_.add({file, info->addr}, info->rc))
      list(root_.get(), link.path, link.path);
    if (info->type == H5O_TYPE_GROUP && seen_.add({file, info->addr}, info->rc))
      descend(file, link.path, link.path, root_.get());
  }

  const ListingRequest& request_;
  std::string root_path_;
  GroupHandle root_;
  SteadyMetadataCache cache_;
  FileNumbers files_;  // the root's file is number 0
  unsigned long root_file_number_ = 0;
  SeenObjects seen_;    // groups gone into
  SeenObjects listed_;  // what was listed, or tried, under a name that fits
  std::vector<Level> levels_;
  std::list<Deferred> deferred_;
  std::list<std::string> found_{""};  // paths; a text by itself for what a deferred link leads to
  Place place_ = found_.begin();      // the text that the next path is appended to
};

}  // namespace

std::string list_members(hid_t file, const std::string& group, const ListingRequest& request) {
  return Walk(file, group, request).run();
}

std::vector<std::string> attribute_names(hid_t object, const std::string& path, bool by_order) {
  std::vector<Entry> entries;
  check_done(read_attributes(object, &entries),
             [&path] { return "Attributes of " + quoted(path) + " cannot be read"; });
  if (by_order) sort_by_creation(&entries);
  return names_of(std::move(entries));
}

}  // namespace kelvo
