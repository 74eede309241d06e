// A walk along a type of the file and its descriptions.
#include "storage/varying_part.h"

#include <algorithm>
#include <string>

#include "storage/check.h"
#include "storage/datatype.h"
#include "storage/describe_datatype.h"
#include "storage/stored_type.h"

namespace kelvo {
namespace {

std::string cannot_read() { return "The data type cannot be read"; }

}  // namespace

Type as_in_file(Type type) {
  type.size = type.file_size;
  for (Type& base : type.base) base = as_in_file(std::move(base));
  for (Member& member : type.members) {
    member.offset = member.file_offset;
    member.type = as_in_file(std::move(member.type));
  }
  return type;
}

Type with_members_of(const Type& type, Type stored) {
  if (type.kind != Kind::compound) return stored;
  std::vector<Member> all = std::exchange(stored.members, {});
  stored.size = 0;
  for (const Member& wanted : type.members) {
    const auto found = std::find_if(all.begin(), all.end(), [&wanted](const Member& member) {
      return member.name == wanted.name;
    });
    if (found == all.end()) fail_hdf5(cannot_read());
    Member member = std::move(*found);
    member.type = with_members_of(wanted.type, std::move(member.type));
    member.offset = stored.size;
    stored.size += member.type.size;
    stored.members.push_back(std::move(member));
  }
  return stored;
}

VaryingPart PartBuilder::part(const Type& type, const Type& stored, hid_t file_type) const {
  VaryingPart part;
  part.kind = type.kind;
  part.varies = type.has_varying_parts();
  part.size = type.size;
  part.stored_size = stored.size;
  part.length = static_cast<std::size_t>(type.array_length());
  if (!part.varies || type.kind == Kind::varying_text) return part;
  if (type.kind == Kind::compound) {
    add_members(type, stored, file_type, &part);
    return part;
  }
  const DatatypeHandle base(check_id(H5Tget_super(file_type), cannot_read));
  if (type.kind == Kind::sequence) {
    part.items = items(type.base[0], base.get());
  } else {
    part.parts.push_back(this->part(type.base[0], stored.base[0], base.get()));
  }
  return part;
}

void PartBuilder::add_members(const Type& type, const Type& stored, hid_t file_type,
                              VaryingPart* part) const {
  for (std::size_t i = 0; i < type.members.size(); ++i) {
    const Member& member = type.members[i];
    const int index = H5Tget_member_index(file_type, member.name.c_str());
    if (index < 0) fail_hdf5(cannot_read());
    const DatatypeHandle member_type(
        check_id(H5Tget_member_type(file_type, static_cast<unsigned>(index)), cannot_read));
    part->parts.push_back(this->part(member.type, stored.members[i].type, member_type.get()));
    part->parts.back().offset = member.offset;
    part->parts.back().stored_offset = stored.members[i].offset;
  }
}

std::unique_ptr<VaryingItems> PartBuilder::items(const Type& item, hid_t file_type) const {
  DatatypeHandle stored = stored_datatype(file_type, address_bytes_);
  const Type described = describe_datatype(stored.get());
  DatatypeHandle memory = is_as_in_file_
                              ? DatatypeHandle(check_id(H5Tcopy(stored.get()), cannot_read))
                              : memory_datatype(described, stored.get());
  auto items = std::make_unique<VaryingItems>(std::move(stored), std::move(memory));
  const Type in_order = with_members_of(item, described);
  items->part = part(item, is_as_in_file_ ? as_in_file(in_order) : in_order, file_type);
  return items;
}

}  // namespace kelvo
