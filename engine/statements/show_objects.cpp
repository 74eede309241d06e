// SHOW of what is in a file: members of groups, attributes, links, kinds.
#include "error.h"
#include "session.h"
#include "statements/attribute_values.h"
#include "statements/listing_clauses.h"
#include "statements/places.h"
#include "statements/show.h"
#include "storage/attribute.h"
#include "storage/link.h"
#include "storage/listing.h"
#include "storage/object.h"

namespace kelvo {
namespace {

constexpr ClauseSet member_clauses = {.recursive = true, .by_order = true, .where = true};

// As in a shell, "link/" means what the link leads to instead of the link.
bool means_the_link(const std::string& written) {
  return !written.empty() && !written.ends_with('/') && !written.ends_with("/.");
}

Answer list(const Target& target, const ListingClauses& clauses, MemberKind kind) {
  expect_no_attribute(target, ObjectKind::group);
  ListingRequest request;
  request.kind = kind;
  request.recursive = clauses.recursive;
  request.by_order = clauses.by_order;
  request.is_named = [&](const std::string& name, const std::string& path) {
    return clauses.admit(name, path, target.path);
  };
  if (clauses.where) {
    request.is_chosen = [&](hid_t group, const std::string& name) {
      AttributeValues attributes(group, name);
      return is_fulfilled(*clauses.where,
                          [&](const std::string& one) { return attributes.find(one); });
    };
  }
  return text_rows_of(list_members(target.file, target.path, request));
}

Answer show_members(Parser& parser, Session& session, MemberKind kind) {
  const ObjectName name = parse_listed_object(parser);
  const ListingClauses clauses = parse_listing_clauses(parser, member_clauses);
  return list(session.find(name, Access::read), clauses, kind);
}

[[noreturn]] void fail_other_link(const std::string& path, NameKind found) {
  throw StatementError(
      Status::wrong_kind,
      quoted(path) + (found == NameKind::link
                          ? " is a link, not an external link (SHOW LINK shows where it leads)"
                          : " is an external link, not a link (SHOW EXTERNAL LINK shows where it "
                            "leads)"));
}

Answer target_rows(const LinkTarget& target) {
  auto rows = std::make_unique<ReadyRows>();
  if (target.file) rows->add_text(*target.file);
  rows->add_text(target.object);
  return rows;
}

// The links of a group or, for a path that is itself a link, where that leads.
Answer show_links(Parser& parser, Session& session, NameKind wanted) {
  const ObjectName name = parse_listed_object(parser);
  const ListingClauses clauses = parse_listing_clauses(parser, member_clauses);
  const Target target = session.find(name, Access::read);
  if (!clauses.any() && !target.attribute && means_the_link(name.path)) {
    const NameKind found = name_kind_at(target.file, target.path);
    if (found == wanted) return target_rows(link_target(target.file, target.path));
    if (found == NameKind::link || found == NameKind::external_link)
      fail_other_link(target.path, found);
  }
  return list(target, clauses,
              wanted == NameKind::link ? MemberKind::soft_link : MemberKind::external_link);
}

std::string_view word_for(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::group:
      return "GROUP";
    case ObjectKind::dataset:
      return "DATASET";
    case ObjectKind::data_type:
      return "DATA TYPE";
    case ObjectKind::dangling_link:
    case ObjectKind::none:
      break;
  }
  return {};
}

std::string_view type_word(const Target& target, bool of_the_link) {
  if (target.attribute) {
    const ObjectHandle object = open_object(target.file, target.path);
    open_attribute(object.get(), target.path, *target.attribute);
    return "ATTRIBUTE";
  }
  const NameKind name = name_kind_at(target.file, target.path);
  if (of_the_link && name == NameKind::link) return "LINK";
  if (of_the_link && name == NameKind::external_link) return "EXTERNAL LINK";
  const ObjectKind kind = kind_at(target.file, target.path);
  if (word_for(kind).empty())
    open_object(target.file, target.path);  // throws what is wrong with it
  return word_for(kind);
}

}  // namespace

Answer show_group(Parser& parser, Session& session) {
  return show_members(parser, session, MemberKind::group);
}
Answer show_dataset(Parser& parser, Session& session) {
  return show_members(parser, session, MemberKind::dataset);
}
Answer show_link(Parser& parser, Session& session) {
  return show_links(parser, session, NameKind::link);
}
Answer show_external_link(Parser& parser, Session& session) {
  return show_links(parser, session, NameKind::external_link);
}

Answer show_attribute(Parser& parser, Session& session) {
  const ObjectName name = parse_listed_object(parser);
  const ListingClauses clauses = parse_listing_clauses(parser, {.by_order = true});
  const Target target = session.find(name, Access::read);
  expect_no_attribute(target, ObjectKind::none);
  const ObjectHandle object = open_object(target.file, target.path);
  std::vector<std::string> names = attribute_names(object.get(), target.path, clauses.by_order);
  std::erase_if(names,
                [&](const std::string& one) { return !clauses.admit(one, one, target.path); });
  return text_rows(names);
}

Answer show_type(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("an object");
  parser.expect_end();
  return text_row(type_word(session.find(name, Access::read), means_the_link(name.path)));
}

}  // namespace kelvo
