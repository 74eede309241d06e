// Reads just as much of Python's notation as the format's headers consist of.
#include "import/npy_header.h"

#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

#include "error.h"
#include "import/host_file.h"

namespace kelvo {
namespace {

constexpr std::size_t longest_header = std::size_t{1024} * 1024;

class HeaderReader {
 public:
  HeaderReader(std::string_view text, const std::string& path) : text_(text), path_(path) {}

  // The value behind a key of the dictionary, as text up to where the caller stops.
  void go_to(std::string_view key) {
    at_ = text_.find("'" + std::string(key) + "'");
    if (at_ == std::string_view::npos) fail("it has no " + std::string(key));
    at_ += key.size() + 2;
    expect(':');
  }

  bool accept(char byte) {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
    if (at_ >= text_.size() || text_[at_] != byte) return false;
    ++at_;
    return true;
  }

  void expect(char byte) {
    if (!accept(byte)) fail("its header is damaged");
  }

  std::string_view quoted_text() {
    expect('\'');
    const std::size_t end = text_.find('\'', at_);
    if (end == std::string_view::npos) fail("its header is damaged");
    const std::string_view found = text_.substr(at_, end - at_);
    at_ = end + 1;
    return found;
  }

  std::uint64_t number() {
    accept(' ');
    std::uint64_t value = 0;
    const auto result = std::from_chars(text_.data() + at_, text_.data() + text_.size(), value);
    if (result.ec != std::errc()) fail("its header is damaged");
    at_ = static_cast<std::size_t>(result.ptr - text_.data());
    return value;
  }

  bool accept_word(std::string_view word) {
    accept(' ');
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
    if (!text_.substr(at_).starts_with(word)) return false;
    at_ += word.size();
    return true;
  }

  [[noreturn]] void fail(const std::string& why) const {
    fail_in_file(path_, 0, 0,
                 StatementError(Status::wrong_kind, "Not a readable .npy file: " + why));
  }

 private:
  std::string_view text_;
  const std::string& path_;
  std::size_t at_ = 0;
};

// '<f8': byte order, kind, bytes of an element.
Type plain_type(HeaderReader& header, std::string_view code) {
  Type type;
  std::size_t size = 0;
  if (code.size() < 3) header.fail("type " + std::string(code) + " is not read");
  std::from_chars(code.data() + 2, code.data() + code.size(), size);
  type.order = code[0] == '>'   ? ByteOrder::big
               : code[0] == '<' ? ByteOrder::little
                                : machine_order();
  type.size = type.file_size = size;
  const bool integer_size = size == 1 || size == 2 || size == 4 || size == 8;
  const char kind = code[1];
  if ((kind == 'i' || kind == 'u' || kind == 'b') && integer_size) {
    type.is_signed = kind == 'i';
  } else if (kind == 'f' && (size == 2 || size == 4 || size == 8)) {
    type.kind = Kind::real;
  } else if (kind == 'S' && size > 0) {
    type.kind = Kind::text;
  } else if (kind == 'V' && size > 0) {
    type.kind = Kind::opaque;
  } else {
    header.fail("type " + std::string(code) + " is not read");
  }
  return type;
}

Type array_of(HeaderReader& header, Type base) {
  Type type;
  type.kind = Kind::array;
  type.size = type.file_size = base.size;
  while (!header.accept(')')) {
    type.extents.push_back(header.number());
    type.size *= static_cast<std::size_t>(type.extents.back());
    header.accept(',');
  }
  type.file_size = type.size;
  type.base = {std::move(base)};
  return type;
}

Type parse_type(HeaderReader& header);

// [('a', '<i4'), ('v', '<f8', (3,))]
Type structured_type(HeaderReader& header) {
  Type type;
  type.kind = Kind::compound;
  type.size = 0;
  while (!header.accept(']')) {
    header.expect('(');
    Member member;
    member.name = header.quoted_text();
    header.expect(',');
    member.type = parse_type(header);
    if (header.accept(',') && header.accept('(')) member.type = array_of(header, member.type);
    header.expect(')');
    header.accept(',');
    member.offset = member.file_offset = type.size;
    type.size += member.type.size;
    type.members.push_back(std::move(member));
  }
  type.file_size = type.size;
  return type;
}

Type parse_type(HeaderReader& header) {
  if (header.accept('[')) return structured_type(header);
  return plain_type(header, header.quoted_text());
}

std::string read_header_text(std::FILE* file, const HeaderReader& failing) {
  std::array<unsigned char, 12> head{};
  const bool magic =
      std::fread(head.data(), 1, 8, file) == 8 && std::memcmp(head.data(), "\x93NUMPY", 6) == 0;
  if (!magic) failing.fail("it does not begin like one");
  const std::size_t length_bytes = head[6] == 1 ? 2 : 4;
  if (std::fread(head.data() + 8, 1, length_bytes, file) != length_bytes)
    failing.fail("it ends in its header");
  std::size_t length = 0;
  for (std::size_t i = length_bytes; i-- > 0;) length = length << 8U | head[8 + i];
  if (length > longest_header) failing.fail("its header is damaged");
  std::string text(length, '\0');
  if (std::fread(text.data(), 1, length, file) != length) failing.fail("it ends in its header");
  return text;
}

}  // namespace

Type read_npy_header(std::FILE* file, const std::string& path) {
  const std::string text = read_header_text(file, HeaderReader("", path));
  HeaderReader header(text, path);
  header.go_to("fortran_order");
  if (!header.accept_word("False")) header.fail("it is in Fortran order (save it with order='C')");
  header.go_to("descr");
  return parse_type(header);
}

}  // namespace kelvo
