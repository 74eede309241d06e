// SHOW of what the elements of a dataset or attribute are, or those of a committed data type.
#include <functional>

#include "session.h"
#include "statements/places.h"
#include "statements/show.h"
#include "storage/describe_datatype.h"
#include "storage/object.h"

namespace kelvo {
namespace {

Type parse_typed_object(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("a dataset or attribute");
  parser.expect_end();
  const Target target = session.find(name, Access::read);
  if (!target.attribute && kind_at(target.file, target.path) == ObjectKind::data_type) {
    return describe_datatype(open_object(target.file, target.path).get());
  }
  return open_place(target, session).type;
}

// What arrays and sequences are made of, as far down as they go.
const Type& innermost(const Type& type) {
  const bool is_made = type.kind == Kind::array || type.kind == Kind::sequence;
  return is_made ? innermost(type.base[0]) : type;
}

// The type, or what a compound's members are: each in its place, those of nested compounds too.
void for_each_leaf(const Type& type, const std::function<void(const Type&)>& act) {
  const Type& inner = innermost(type);
  if (inner.kind != Kind::compound) return act(inner);
  for (const Member& member : inner.members) for_each_leaf(member.type, act);
}

bool has_order(const Type& type) { return type.is_numeric() || type.kind == Kind::enumeration; }

bool has_charset(const Type& type) {
  return type.kind == Kind::text || type.kind == Kind::varying_text;
}

}  // namespace

Answer show_data_type(Parser& parser, Session& session) {
  return text_row(notation(parse_typed_object(parser, session)));
}

Answer show_member(Parser& parser, Session& session) {
  const Type type = parse_typed_object(parser, session);
  auto rows = std::make_unique<ReadyRows>();
  for (const Member& member : innermost(type).members) rows->add_text(member.name);
  for (const EnumName& value : innermost(type).names) rows->add_text(value.name);
  return rows;
}

Answer show_offset(Parser& parser, Session& session) {
  const Type type = parse_typed_object(parser, session);
  auto rows = std::make_unique<ReadyRows>();
  for (const Member& member : innermost(type).members)
    rows->add_bigint(static_cast<std::int64_t>(member.file_offset));
  return rows;
}

Answer show_tag(Parser& parser, Session& session) {
  const Type type = parse_typed_object(parser, session);
  if (innermost(type).kind != Kind::opaque) return nullptr;
  return text_row(innermost(type).tag);
}

Answer show_endianness(Parser& parser, Session& session) {
  const Type type = parse_typed_object(parser, session);
  auto rows = std::make_unique<ReadyRows>();
  for_each_leaf(type, [&rows](const Type& leaf) {
    if (has_order(leaf))
      rows->add_text(leaf.order == ByteOrder::little ? "LITTLE ENDIAN" : "BIG ENDIAN");
  });
  return rows;
}

Answer show_charset(Parser& parser, Session& session) {
  const Type type = parse_typed_object(parser, session);
  auto rows = std::make_unique<ReadyRows>();
  for_each_leaf(type, [&rows](const Type& leaf) {
    if (has_charset(leaf)) rows->add_text(leaf.charset == Charset::ascii ? "ASCII" : "UTF8");
  });
  return rows;
}

}  // namespace kelvo
