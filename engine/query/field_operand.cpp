// Columns from elements.
#include "query/field_operand.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "query/wide.h"
#include "values/bits.h"

namespace kelvo {
namespace {

// The two loops are one, but only with the distance known to the compiler does it vectorise.
// NOLINTBEGIN(bugprone-signed-char-misuse): a TINYINT is a number, not a character.
template <typename From, typename To>
[[gnu::always_inline]] inline void load_column(const std::byte* from, std::size_t stride,
                                               std::size_t count, void* __restrict out) {
  auto* values = static_cast<To*>(out);
  From value;
  if (stride == sizeof(From)) {
    for (std::size_t i = 0; i < count; ++i) {
      std::memcpy(&value, from + i * sizeof(From), sizeof value);
      values[i] = static_cast<To>(value);
    }
    return;
  }
  for (std::size_t i = 0; i < count; ++i) {
    std::memcpy(&value, from + i * stride, sizeof value);
    values[i] = static_cast<To>(value);
  }
}
// NOLINTEND(bugprone-signed-char-misuse)

using Loader = void (*)(const std::byte* from, std::size_t stride, std::size_t count, void* out);

Loader integer_loader(std::size_t size, bool is_signed) {
  switch (size) {
    case 1:
      return is_signed ? quickest<load_column<std::int8_t, std::int64_t>>()
                       : quickest<load_column<std::uint8_t, std::int64_t>>();
    case 2:
      return is_signed ? quickest<load_column<std::int16_t, std::int64_t>>()
                       : quickest<load_column<std::uint16_t, std::int64_t>>();
    case 4:
      return is_signed ? quickest<load_column<std::int32_t, std::int64_t>>()
                       : quickest<load_column<std::uint32_t, std::int64_t>>();
    default:
      return is_signed ? quickest<load_column<std::int64_t, std::int64_t>>()
                       : quickest<load_column<std::uint64_t, std::uint64_t>>();
  }
}

const std::byte* first_of(const Field& field, const Batch& batch) {
  return field.fixed != nullptr ? field.fixed : batch.elements + field.offset;
}

// Numbers in the machine's byte order.
template <typename Value>
class NumberField : public Operand {
 public:
  NumberField(const Field& field, Loader loader)
      : Operand(domain_of<Value>), field_(field), loader_(loader) {}

  const void* evaluate(const Batch& batch, const Mask* /*active*/) override {
    const std::byte* first = first_of(field_, batch);
    // Values that lie as a column already are used where they are.
    const bool as_column = batch.stride == sizeof(Value) && field_.type->size == sizeof(Value) &&
                           reinterpret_cast<std::uintptr_t>(first) % alignof(Value) == 0;
    if (as_column) return first;
    loader_(first, batch.stride, batch.count, column_.data());
    return column_.data();
  }

 private:
  Field field_;
  Loader loader_;
  Column<Value> column_;
};

// Integers that memory holds in the file's byte order: enumerations and times.
template <typename Value>
class ForeignField : public Operand {
 public:
  explicit ForeignField(const Field& field) : Operand(domain_of<Value>), field_(field) {}

  const void* evaluate(const Batch& batch, const Mask* /*active*/) override {
    const Type& type = *field_.type;
    const std::byte* first = first_of(field_, batch);
    for (std::size_t i = 0; i < batch.count; ++i) {
      column_[i] = static_cast<Value>(
          load_integer(first + i * batch.stride, type.size, type.order, type.is_signed));
    }
    return column_.data();
  }

 private:
  Field field_;
  Column<Value> column_;
};

class PositionField : public Operand {
 public:
  PositionField() : Operand(Domain::signed_integer) {}
  const void* evaluate(const Batch& batch, const Mask* /*active*/) override {
    for (std::size_t i = 0; i < batch.count; ++i)
      column_[i] = batch.position + static_cast<std::int64_t>(i) * batch.step;
    return column_.data();
  }

 private:
  Column<std::int64_t> column_;
};

// Strings and opaque values: views of the bytes in the elements.
class TextField : public Operand {
 public:
  explicit TextField(const Field& field) : Operand(Domain::text), field_(field) {}

  const void* evaluate(const Batch& batch, const Mask* /*active*/) override {
    const std::byte* first = first_of(field_, batch);
    for (std::size_t i = 0; i < batch.count; ++i) column_[i] = view(first + i * batch.stride);
    return column_.data();
  }

 private:
  [[nodiscard]] std::string_view view(const std::byte* element) const {
    if (field_.type->kind == Kind::text) return without_padding(*field_.type, element);
    if (field_.type->kind == Kind::varying_text) return varying_text(element);
    return {reinterpret_cast<const char*>(element), field_.type->size};
  }

  Field field_;
  Column<std::string_view> column_;
};

// Text that is made for each value: references' paths, and names of enumerations.
class WrittenField : public Operand {
 public:
  WrittenField(const Field& field, const ReferenceNamer& namer)
      : Operand(Domain::text), field_(field), namer_(namer) {}

  const void* evaluate(const Batch& batch, const Mask* /*active*/) override {
    const std::byte* first = first_of(field_, batch);
    for (std::size_t i = 0; i < batch.count; ++i) {
      texts_[i].clear();
      append_plain(*field_.type, first + i * batch.stride, namer_, &texts_[i]);
      column_[i] = texts_[i];
    }
    return column_.data();
  }

 private:
  Field field_;
  const ReferenceNamer& namer_;
  std::array<std::string, batch_size> texts_;
  Column<std::string_view> column_;
};

OperandPointer integer_field(const Field& field) {
  const Type& type = *field.type;
  const bool is_signed = type.is_signed && type.kind != Kind::bit_field;
  const bool is_foreign = type.kind == Kind::enumeration || type.kind == Kind::time;
  if (!is_signed && type.size >= 8) {
    if (is_foreign) return std::make_unique<ForeignField<std::uint64_t>>(field);
    return std::make_unique<NumberField<std::uint64_t>>(field, integer_loader(8, false));
  }
  if (is_foreign) return std::make_unique<ForeignField<std::int64_t>>(field);
  return std::make_unique<NumberField<std::int64_t>>(field, integer_loader(type.size, is_signed));
}

}  // namespace

bool is_comparable(const Type& type) {
  return type.kind != Kind::compound && type.kind != Kind::array && type.kind != Kind::sequence;
}

OperandPointer field_operand(const Field& field, const ReferenceNamer& namer) {
  if (field.type == nullptr) return std::make_unique<PositionField>();
  switch (field.type->kind) {
    case Kind::real:
      return std::make_unique<NumberField<double>>(
          field, field.type->size == 4 ? quickest<load_column<float, double>>()
                                       : quickest<load_column<double, double>>());
    case Kind::text:
    case Kind::varying_text:
    case Kind::opaque:
      return std::make_unique<TextField>(field);
    case Kind::object_reference:
    case Kind::region_reference:
      return name_operand(field, namer);
    default:
      return integer_field(field);
  }
}

OperandPointer name_operand(const Field& field, const ReferenceNamer& namer) {
  return std::make_unique<WrittenField>(field, namer);
}

}  // namespace kelvo
