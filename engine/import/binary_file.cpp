// Elements as bytes.
#include "import/binary_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "error.h"
#include "import/host_file.h"
#include "import/npy_header.h"
#include "values/bits.h"
#include "values/literal_of.h"

namespace kelvo {
namespace {

constexpr std::size_t block_bytes = std::size_t{512} * 1024;

struct CloseFile {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using HostFile = std::unique_ptr<std::FILE, CloseFile>;

// Half floats become floats, and numbers of the other byte order the machine's, in place of what
// they were.
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

Literal npy_literal(const Type& type, const std::byte* element) {
  if (type.kind == Kind::array) {
    return items_literal(type.base[0], element, static_cast<std::size_t>(type.array_length()));
  }
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

bool lies_alike(const Type& from, const Type& to) {
  return from.kind == to.kind && from.is_numeric() && from.kind != Kind::time &&
         from.size == to.size && from.file_size == to.file_size && from.is_signed == to.is_signed &&
         from.order == machine_order();
}

class BinaryStream : public ElementStream {
 public:
  // `from` describes the elements in the file, which stands at the first of them.
  BinaryStream(std::string path, HostFile file, Type from, bool alike)
      : path_(std::move(path)), file_(std::move(file)), from_(std::move(from)), alike_(alike) {}

  void read_all(const Type& type, const Taker& take) override {
    EncodedElements block(type);
    for (std::size_t count = read_block(); count > 0; count = read_block()) {
      add(block, count);
      take(block);
      block.clear();
    }
  }

 private:
  std::size_t read_block() {
    bytes_.resize(std::max<std::size_t>(1, block_bytes / from_.size) * from_.size);
    const std::size_t got = std::fread(bytes_.data(), 1, bytes_.size(), file_.get());
    if (got < bytes_.size() && std::ferror(file_.get()) != 0) refuse_host_file(path_);
    if (got % from_.size != 0) {
      fail_in_file(path_, 0, 0,
                   StatementError(Status::out_of_range, "It ends within an element of " +
                                                            std::to_string(from_.size) + " bytes"));
    }
    return got / from_.size;
  }

  void add(EncodedElements& elements, std::size_t count) {
    if (alike_) return elements.append_bytes(bytes_.data(), count);
    for (std::size_t i = 0; i < count; ++i, ++done_) {
      try {
        elements.append(npy_literal(from_, bytes_.data() + i * from_.size));
      } catch (const StatementError& error) {
        fail_in_file(path_, 0, 0,
                     StatementError(error.status(),
                                    "Element " + std::to_string(done_) + ": " + error.what()));
      }
    }
  }

  std::string path_;
  HostFile file_;
  Type from_;
  bool alike_;
  std::vector<std::byte> bytes_;
  std::uint64_t done_ = 0;
};

}  // namespace

std::unique_ptr<ElementStream> open_npy(const std::string& path, const Type& type) {
  HostFile file(open_host_file(path));
  Type from = read_npy_header(file.get(), path);
  const bool alike = lies_alike(from, type);
  return std::make_unique<BinaryStream>(path, std::move(file), std::move(from), alike);
}

std::unique_ptr<ElementStream> open_bin(const std::string& path, const Type& type) {
  if (type.has_varying_parts()) {
    throw StatementError(Status::wrong_kind,
                         type_name(type) + " has no fixed size, a .bin file cannot hold it");
  }
  return std::make_unique<BinaryStream>(path, HostFile(open_host_file(path)), type, true);
}

}  // namespace kelvo
