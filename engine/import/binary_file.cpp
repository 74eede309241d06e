// Elements as bytes.
#include "import/binary_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

#include "error.h"
#include "import/column_order.h"
#include "import/host_file.h"
#include "import/npy_header.h"
#include "values/bits.h"
#include "values/convert.h"
#include "values/literal_of.h"

namespace kelvo {
namespace {

constexpr std::size_t block_bytes = std::size_t{512} * 1024;

Literal npy_literal(const Type& type, const std::byte* element);

float from_half(std::uint64_t bits) {
  const std::uint32_t sign = static_cast<std::uint32_t>(bits & 0x8000U) << 16U;
  const auto exponent = static_cast<int>(bits >> 10U & 0x1fU);
  const auto fraction = static_cast<float>(bits & 0x3ffU);
  float value = 0;
  if (exponent == 0x1f) {
    value = fraction == 0 ? HUGE_VALF : NAN;
  } else if (exponent == 0) {
    value = std::ldexp(fraction, -24);
  } else {
    value = std::ldexp(fraction + 1024.0F, exponent - 25);
  }
  return sign != 0 ? -value : value;
}

Literal number_literal(const Type& type, const std::byte* element) {
  const std::uint64_t bits = load_integer(element, type.size, type.order, type.is_signed);
  Type native = type;
  native.order = machine_order();
  std::byte bytes[8];
  if (type.kind == Kind::real && type.size == 2) {
    const float value = from_half(bits & 0xffffU);
    native.size = native.file_size = sizeof value;
    std::memcpy(bytes, &value, sizeof value);
  } else {
    store_integer(bits, type.size, machine_order(), bytes);
  }
  return literal_of(native, bytes, {});
}

Literal items_literal(const Type& base, const std::byte* items, std::size_t count) {
  Literal literal;
  literal.kind = LiteralKind::list;
  for (std::size_t i = 0; i < count; ++i)
    literal.items.push_back(npy_literal(base, items + i * base.size));
  return literal;
}

void append_utf8(std::uint32_t code, std::string* text) {
  if (code < 0x80) {
    *text += static_cast<char>(code);
    return;
  }
  const unsigned more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;  // bytes behind the first
  static constexpr unsigned leads[] = {0, 0xc0, 0xe0, 0xf0};
  *text += static_cast<char>(leads[more] | code >> 6 * more);
  for (unsigned i = more; i-- > 0;) *text += static_cast<char>(0x80U | (code >> 6 * i & 0x3fU));
}

// NumPy's "U": characters of four bytes, filled up with null characters.
Literal characters_literal(const Type& type, const std::byte* element) {
  Literal literal;
  literal.kind = LiteralKind::string;
  std::size_t length = 0;
  for (std::size_t at = 0; at < type.size; at += 4) {
    const auto code = static_cast<std::uint32_t>(load_integer(element + at, 4, type.order, false));
    append_utf8(code, &literal.text);
    if (code != 0) length = literal.text.size();
  }
  literal.text.resize(length);
  return literal;
}

Literal npy_literal(const Type& type, const std::byte* element) {
  if (type.kind == Kind::array) {
    return items_literal(type.base[0], element, static_cast<std::size_t>(type.array_length()));
  }
  if (type.kind == Kind::varying_text) return characters_literal(type, element);
  if (type.kind != Kind::compound) {
    return type.is_numeric() ? number_literal(type, element) : literal_of(type, element, {});
  }
  Literal literal;
  literal.kind = LiteralKind::object;
  for (const Member& member : type.members) {
    literal.names.push_back(member.name);
    literal.items.push_back(npy_literal(member.type, element + member.offset));
  }
  return literal;
}

// Whether elements lie in the file as they do in memory.
bool is_as_in_memory(const Type& type) {
  if (type.kind == Kind::varying_text || (type.kind == Kind::real && type.size == 2)) return false;
  const bool ordered = type.is_numeric() || type.kind == Kind::enumeration;
  if (ordered && type.size > 1 && type.order != machine_order()) return false;
  return std::all_of(type.base.begin(), type.base.end(), is_as_in_memory) &&
         std::all_of(type.members.begin(), type.members.end(),
                     [](const Member& member) { return is_as_in_memory(member.type); });
}

class BinaryStream : public ElementStream {
 public:
  // `from` describes the elements in the file, which stands at the first of them. `wanted`: how
  // many there must be, where the file says so. `columns`: where they are not in C order.
  BinaryStream(std::string path, HostFile file, Type from, std::optional<std::uint64_t> wanted,
               std::optional<ColumnOrder> columns = std::nullopt)
      : path_(std::move(path)),
        file_(std::move(file)),
        from_(std::move(from)),
        wanted_(wanted),
        columns_(std::move(columns)) {}

  void read_all(const Type& type, const Taker& take) override {
    EncodedElements block(type);
    std::optional<Conversion> conversion;
    if (is_as_in_memory(from_)) conversion.emplace(from_, type, MemberMatch::by_name, nullptr);
    for (std::size_t count = read_block(); count > 0; count = read_block()) {
      try {
        conversion ? conversion->append(bytes_.data(), count, &block) : add(block, count);
      } catch (const StatementError& error) {
        fail_in_file(path_, 0, 0, error);
      }
      take(block);
      block.clear();
    }
  }

 private:
  [[noreturn]] void fail(const std::string& message) const {
    fail_in_file(path_, 0, 0, StatementError(Status::out_of_range, message));
  }

  std::size_t read_block() {
    const std::size_t most = std::max<std::size_t>(1, block_bytes / from_.size);
    const std::uint64_t count = std::min<std::uint64_t>(most, wanted_ ? *wanted_ - read_ : most);
    bytes_.resize(static_cast<std::size_t>(count) * from_.size);
    const std::size_t got = columns_ ? columns_->read(bytes_.data(), bytes_.size())
                                     : std::fread(bytes_.data(), 1, bytes_.size(), file_.get());
    if (got < bytes_.size() && std::ferror(file_.get()) != 0) refuse_host_file(path_);
    if (columns_ && got < bytes_.size())
      fail("It ends before the last of the elements that its header says");
    if (got % from_.size != 0)
      fail("It ends within an element of " + std::to_string(from_.size) + " bytes");
    read_ += got / from_.size;
    if (wanted_ && got < bytes_.size()) {
      fail("It has " + std::to_string(read_) + " elements, not the " + std::to_string(*wanted_) +
           " that its header says");
    }
    return got / from_.size;
  }

  void add(EncodedElements& elements, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, ++done_) {
      try {
        elements.append(npy_literal(from_, bytes_.data() + i * from_.size));
      } catch (const StatementError& error) {
        throw StatementError(error.status(),
                             "Element " + std::to_string(done_) + ": " + error.what());
      }
    }
  }

  std::string path_;
  HostFile file_;
  Type from_;
  std::optional<std::uint64_t> wanted_;
  std::optional<ColumnOrder> columns_;
  std::vector<std::byte> bytes_;
  std::uint64_t read_ = 0;
  std::uint64_t done_ = 0;
};

// Where elements are arrays themselves, NumPy's array has their dimensions behind its own.
void take_array(const Type& type, NpyArray* array) {
  if (type.kind != Kind::array || array->type.kind == Kind::array) return;
  std::vector<std::uint64_t>& shape = array->shape;
  const auto rank = type.extents.size();
  if (shape.size() < rank ||
      !std::equal(type.extents.rbegin(), type.extents.rend(), shape.rbegin()))
    return;
  shape.resize(shape.size() - rank);
  array->type = npy_array_of(std::move(array->type), type.extents);
}

std::uint64_t element_count(const std::vector<std::uint64_t>& shape, const std::string& path) {
  std::uint64_t count = 1;
  for (const std::uint64_t extent : shape) {
    if (extent != 0 && count > std::numeric_limits<std::uint64_t>::max() / extent) {
      fail_in_file(
          path, 0, 0,
          StatementError(Status::wrong_kind, "Not a readable .npy file: its header is damaged"));
    }
    count *= extent;
  }
  return count;
}

std::optional<ColumnOrder> column_order(std::FILE* file, const NpyArray& array,
                                        const std::string& path) {
  if (!array.columns_first) return std::nullopt;
  const std::uint64_t row =
      element_count(array.shape, path) / std::max<std::uint64_t>(1, array.shape[0]);
  if (row > ColumnOrder::budget / array.type.size) {
    fail_in_file(path, 0, 0,
                 StatementError(Status::not_available,
                                "It is in Fortran order with more than " +
                                    std::to_string(ColumnOrder::budget >> 20U) +
                                    " MiB for each first index (save it with order='C')"));
  }
  return ColumnOrder(file, array.shape, array.type.size);
}

// The type as .bin files hold it: little endian, text filled up with null bytes.
Type in_bytes(Type type) {
  type.order = ByteOrder::little;
  if (type.kind == Kind::text) type.padding = Padding::null_padded;
  for (Type& base : type.base) base = in_bytes(std::move(base));
  for (Member& member : type.members) member.type = in_bytes(std::move(member.type));
  return type;
}

}  // namespace

std::unique_ptr<ElementStream> open_npy(const std::string& path, const Type& type) {
  HostFile file = open_host_file(path);
  NpyArray array = read_npy_header(file.get(), path);
  std::optional<ColumnOrder> columns = column_order(file.get(), array, path);
  take_array(type, &array);
  const std::uint64_t count = element_count(array.shape, path);
  return std::make_unique<BinaryStream>(path, std::move(file), std::move(array.type), count,
                                        std::move(columns));
}

std::unique_ptr<ElementStream> open_bin(const std::string& path, const Type& type) {
  if (!type.is_self_contained()) {
    throw StatementError(Status::wrong_kind,
                         type_name(type) + " has no fixed size, a .bin file cannot hold it");
  }
  return std::make_unique<BinaryStream>(path, open_host_file(path), in_bytes(type), std::nullopt);
}

}  // namespace kelvo
