// Links of groups, looked at and changed.
#include "storage/link.h"

#include <array>
#include <string_view>

#include "storage/check.h"
#include "storage/entries.h"
#include "storage/object.h"

namespace kelvo {
namespace {

struct KindWords {
  std::string_view title;
  std::string_view article;
};

const KindWords& words(NameKind kind) {
  static constexpr std::array<KindWords, 6> table = {{
      {"Object", "an object"},
      {"Group", "a group"},
      {"Dataset", "a dataset"},
      {"Data type", "a data type"},
      {"Link", "a link"},
      {"External link", "an external link"},
  }};
  return table.at(static_cast<std::size_t>(kind));
}

NameKind object_kind(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::group:
      return NameKind::group;
    case ObjectKind::dataset:
      return NameKind::dataset;
    case ObjectKind::data_type:
      return NameKind::data_type;
    default:
      return NameKind::none;
  }
}

[[noreturn]] void fail_kind(const std::string& path, NameKind found, NameKind wanted) {
  throw StatementError(Status::wrong_kind, quoted(path) + " is " + with_article(found) + ", not " +
                                               with_article(wanted));
}

// The paths of the groups on the way to `path`, the root left out.
std::vector<std::string> way_to(const std::string& path) {
  std::vector<std::string> way;
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    way.push_back(path.substr(0, slash));
  }
  return way;
}

std::string cannot_make(NameKind kind, const std::string& path) {
  return title(kind) + " " + quoted(path) + " cannot be created";
}

std::string cannot_read(const std::string& path) {
  return "Link " + quoted(path) + " cannot be read";
}

H5L_info_t link_info(hid_t file, const std::string& path) {
  H5L_info_t info;
  check_done(H5Lget_info(file, path.c_str(), &info, H5P_DEFAULT),
             [&path] { return cannot_read(path); });
  return info;
}

bool is_of_kind(hid_t group, const Entry& link, NameKind kind) {
  if (link.type == H5L_TYPE_SOFT) return kind == NameKind::link;
  if (link.type != H5L_TYPE_HARD) return kind == NameKind::external_link;
  H5O_info_t info;
  if (H5Oget_info_by_name2(group, link.name.c_str(), &info, H5O_INFO_BASIC, H5P_DEFAULT) < 0)
    return false;
  return (info.type == H5O_TYPE_GROUP && kind == NameKind::group) ||
         (info.type == H5O_TYPE_DATASET && kind == NameKind::dataset);
}

struct SoughtObject {
  unsigned long file_number;
  haddr_t address;
};

herr_t stop_at_object(hid_t /*object*/, const char* /*name*/, const H5O_info_t* info, void* data) {
  const auto* sought = static_cast<const SoughtObject*>(data);
  return info->fileno == sought->file_number && info->addr == sought->address ? 1 : 0;
}

}  // namespace

std::string title(NameKind kind) { return std::string(words(kind).title); }

std::string with_article(NameKind kind) { return std::string(words(kind).article); }

std::string lower_title(NameKind kind) {
  std::string text = title(kind);
  text[0] = static_cast<char>(text[0] - 'A' + 'a');
  return text;
}

NameKind name_kind_at(hid_t file, const std::string& path) {
  if (path == "/") return NameKind::group;
  if (kind_at(file, split_path(path).parent) != ObjectKind::group) return NameKind::none;
  if (!check_answer(H5Lexists(file, path.c_str(), H5P_DEFAULT),
                    [&path] { return cannot_read(path); }))
    return NameKind::none;
  switch (link_info(file, path).type) {
    case H5L_TYPE_SOFT:
      return NameKind::link;
    case H5L_TYPE_HARD:
      return object_kind(kind_at(file, path));
    default:
      return NameKind::external_link;
  }
}

bool is_there(hid_t file, const std::string& path, NameKind kind) {
  const NameKind found = name_kind_at(file, path);
  if (found != NameKind::none && found != kind) fail_kind(path, found, kind);
  return found == kind;
}

void expect_there(hid_t file, const std::string& path, NameKind kind) {
  if (is_there(file, path, kind)) return;
  throw StatementError(Status::does_not_exist,
                       title(kind) + " " + quoted(path) + " does not exist");
}

void expect_creatable(hid_t file, const std::string& path, NameKind kind) {
  for (const std::string& group : way_to(path)) {
    if (kind_at(file, group) == ObjectKind::none) return;
    open_group(file, group);
  }
  const NameKind found = name_kind_at(file, path);
  if (found == NameKind::none) return;
  throw StatementError(Status::exists_already,
                       found == kind
                           ? title(kind) + " " + quoted(path) + " already exists"
                           : quoted(path) + " already exists and is " + with_article(found));
}

std::vector<std::string> names_of_kind(hid_t file, const std::string& group, NameKind kind) {
  const GroupHandle opened = open_group(file, group);
  std::vector<Entry> entries;
  check_done(read_links(opened.get(), &entries),
             [&group] { return "Group " + quoted(group) + " cannot be read"; });
  std::erase_if(entries,
                [&](const Entry& entry) { return !is_of_kind(opened.get(), entry, kind); });
  return names_of(std::move(entries));
}

std::string path_below(const std::string& path, const std::string& name) {
  return path == "/" ? "/" + name : path + "/" + name;
}

void create_soft_link(hid_t file, const std::string& path, const std::string& target) {
  check_done(
      H5Lcreate_soft(target.c_str(), file, path.c_str(), making_parents().get(), H5P_DEFAULT),
      [&path] { return cannot_make(NameKind::link, path); });
}

void create_hard_link(hid_t file, const std::string& path, const std::string& target) {
  check_done(
      H5Lcreate_hard(file, target.c_str(), file, path.c_str(), making_parents().get(), H5P_DEFAULT),
      [&path] { return cannot_make(NameKind::link, path); });
}

void create_external_link(hid_t file, const std::string& path, const std::string& target_file,
                          const std::string& target) {
  check_done(H5Lcreate_external(target_file.c_str(), target.c_str(), file, path.c_str(),
                                making_parents().get(), H5P_DEFAULT),
             [&path] { return cannot_make(NameKind::external_link, path); });
}

LinkTarget link_target(hid_t file, const std::string& path) {
  const H5L_info_t info = link_info(file, path);
  std::string value(info.u.val_size + 1, '\0');
  check_done(H5Lget_val(file, path.c_str(), value.data(), info.u.val_size, H5P_DEFAULT),
             [&path] { return cannot_read(path); });
  // The library follows a soft link's path up to the first null byte, if there is one in it.
  if (info.type == H5L_TYPE_SOFT) return {std::nullopt, value.substr(0, value.find('\0'))};
  unsigned flags = 0;
  const char* target_file = nullptr;
  const char* target = nullptr;
  check_done(H5Lunpack_elink_val(value.data(), info.u.val_size, &flags, &target_file, &target),
             [&path] { return cannot_read(path); });
  return {target_file, target};
}

void copy_link(hid_t from_file, const std::string& from, hid_t to_file, const std::string& to) {
  const LinkTarget target = link_target(from_file, from);
  if (!target.file) return create_soft_link(to_file, to, target.object);
  create_external_link(to_file, to, *target.file, target.object);
}

void move_name(hid_t file, const std::string& from, const std::string& to) {
  check_done(H5Lmove(file, from.c_str(), file, to.c_str(), making_parents().get(), H5P_DEFAULT),
             [&] { return quoted(from) + " cannot be renamed to " + quoted(to); });
}

void remove_name(hid_t file, const std::string& path) {
  check_done(H5Ldelete(file, path.c_str(), H5P_DEFAULT),
             [&path] { return quoted(path) + " cannot be dropped"; });
}

bool is_within(hid_t file, const std::string& path, const std::string& group) {
  const auto what = [&group] { return "Group " + quoted(group) + " cannot be read"; };
  H5O_info_t info;
  check_done(H5Oget_info_by_name2(file, path.c_str(), &info, H5O_INFO_BASIC, H5P_DEFAULT), what);
  SoughtObject sought = {info.fileno, info.addr};
  const herr_t found = H5Ovisit_by_name2(file, group.c_str(), H5_INDEX_NAME, H5_ITER_NATIVE,
                                         stop_at_object, &sought, H5O_INFO_BASIC, H5P_DEFAULT);
  check_done(found, what);
  return found > 0;
}

}  // namespace kelvo
