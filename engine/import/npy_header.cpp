// Reads just as much of Python's notation as the format's headers consist of.
#include "import/npy_header.h"

#include <array>
#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

#include "error.h"
#include "import/host_file.h"

namespace kelvo {
namespace {

constexpr std::size_t longest_header = std::size_t{1024} * 1024;
constexpr std::size_t deepest = 32;                                          // types within types
constexpr std::uint64_t largest_element = std::uint64_t{256} * 1024 * 1024;  // bytes

class HeaderReader {
 public:
  HeaderReader(std::string_view text, const std::string& path) : text_(text), path_(path) {}

  // The value behind a key of the dictionary, as text up to where the caller stops.
  void go_to(std::string_view key) {
    at_ = text_.find("'" + std::string(key) + "':");
    if (at_ == std::string_view::npos) fail("it has no " + std::string(key));
    at_ += key.size() + 3;
  }

  bool accept(char byte) {
    skip_blanks();
    if (at_ >= text_.size() || text_[at_] != byte) return false;
    ++at_;
    return true;
  }

  void skip_blanks() {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
  }

  void expect(char byte) {
    if (!accept(byte)) fail("its header is damaged");
  }

  // Between quotes of either kind; a backslash takes the next byte as it is.
  std::string quoted_text() {
    const char quote = accept('"') ? '"' : '\'';
    if (quote == '\'') expect('\'');
    std::string found;
    for (; at_ < text_.size() && text_[at_] != quote; ++at_) {
      if (text_[at_] == '\\' && at_ + 1 < text_.size()) ++at_;
      found += text_[at_];
    }
    expect(quote);
    return found;
  }

  std::uint64_t number() {
    skip_blanks();
    std::uint64_t value = 0;
    const auto result = std::from_chars(text_.data() + at_, text_.data() + text_.size(), value);
    if (result.ec != std::errc()) fail("its header is damaged");
    at_ = static_cast<std::size_t>(result.ptr - text_.data());
    return value;
  }

  bool accept_word(std::string_view word) {
    skip_blanks();
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

Type complex_type(Type part) {
  Type type;
  type.kind = Kind::compound;
  part.size = part.file_size = part.size / 2;
  for (const char* name : {"r", "i"})
    type.members.push_back({name, type.members.size() * part.size, 0, part});
  type.size = type.file_size = 2 * part.size;
  return type;
}

// '<f8': byte order, kind, bytes of an element ('U': characters).
Type plain_type(HeaderReader& header, const std::string& code) {
  Type type;
  std::uint32_t size = 0;
  const char* end = code.data() + code.size();
  const bool sized = code.size() > 2 && std::from_chars(code.data() + 2, end, size).ptr == end;
  const char kind = sized && size > 0 && size < largest_element / 4 ? code[1] : '?';
  type.order = code[0] == '>'   ? ByteOrder::big
               : code[0] == '<' ? ByteOrder::little
                                : machine_order();
  type.size = type.file_size = size;
  const bool integer_size = size == 1 || size == 2 || size == 4 || size == 8;
  if ((kind == 'i' || kind == 'u' || kind == 'b') && integer_size) {
    type.is_signed = kind == 'i';
  } else if (kind == 'f' && (size == 2 || size == 4 || size == 8)) {
    type.kind = Kind::real;
  } else if (kind == 'c' && (size == 8 || size == 16)) {
    type.kind = Kind::real;
    type = complex_type(type);
  } else if (kind == 'S') {
    type.kind = Kind::text;
  } else if (kind == 'U') {
    type.kind = Kind::varying_text;
    type.size = type.file_size = std::size_t{4} * size;
  } else if (kind == 'V') {
    type.kind = Kind::opaque;
  } else {
    header.fail("type " + quoted(code) + " is not read");
  }
  return type;
}

std::vector<std::uint64_t> parse_tuple(HeaderReader& header) {
  std::vector<std::uint64_t> numbers;
  header.expect('(');
  while (!header.accept(')')) {
    numbers.push_back(header.number());
    if (header.accept(',')) continue;
    header.expect(')');
    break;
  }
  return numbers;
}

void check_size(const HeaderReader& header, const Type& type) {
  if (type.size == 0 || type.size > largest_element) header.fail("its header is damaged");
}

// Whether the extents multiply to something that an element may have.
bool is_reasonable(const std::vector<std::uint64_t>& extents, std::uint64_t size) {
  for (const std::uint64_t extent : extents) {
    if (extent == 0 || extent > largest_element / size) return false;
    size *= extent;
  }
  return true;
}

Type parse_type(HeaderReader& header, std::size_t depth);

// 'a', or with a title: ('Title', 'a')
std::string parse_member_name(HeaderReader& header) {
  const bool titled = header.accept('(');
  std::string name = header.quoted_text();
  if (!titled) return name;
  header.expect(',');
  name = header.quoted_text();
  header.expect(')');
  return name;
}

// NumPy writes the gaps that alignment leaves as members without a name.
bool is_gap(const Member& member) {
  return member.name.empty() && member.type.kind == Kind::opaque;
}

// [('a', '<i4'), ('v', '<f8', (3,)), ('', '|V4')]
Type structured_type(HeaderReader& header, std::size_t depth) {
  if (depth > deepest) header.fail("its type is nested too deeply");
  Type type;
  type.kind = Kind::compound;
  type.size = 0;
  while (!header.accept(']')) {
    header.expect('(');
    Member member;
    member.name = parse_member_name(header);
    header.expect(',');
    member.type = parse_type(header, depth + 1);
    if (header.accept(',')) {
      std::vector<std::uint64_t> extents = parse_tuple(header);
      if (!is_reasonable(extents, member.type.size)) header.fail("its header is damaged");
      member.type = npy_array_of(std::move(member.type), std::move(extents));
    }
    header.expect(')');
    header.accept(',');
    member.offset = member.file_offset = type.size;
    type.size += member.type.size;
    check_size(header, type);
    if (!is_gap(member)) type.members.push_back(std::move(member));
  }
  check_size(header, type);
  type.file_size = type.size;
  return type;
}

Type parse_type(HeaderReader& header, std::size_t depth) {
  if (header.accept('[')) return structured_type(header, depth);
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

Type npy_array_of(Type base, std::vector<std::uint64_t> extents) {
  Type type;
  type.kind = Kind::array;
  type.size = base.size;
  for (const std::uint64_t extent : extents) type.size *= static_cast<std::size_t>(extent);
  type.file_size = type.size;
  type.extents = std::move(extents);
  type.base.push_back(std::move(base));
  return type;
}

NpyArray read_npy_header(std::FILE* file, const std::string& path) {
  const std::string text = read_header_text(file, HeaderReader("", path));
  HeaderReader header(text, path);
  NpyArray array;
  header.go_to("shape");
  array.shape = parse_tuple(header);
  header.go_to("fortran_order");
  array.columns_first = !header.accept_word("False") && array.shape.size() > 1;
  header.go_to("descr");
  array.type = parse_type(header, 0);
  return array;
}

}  // namespace kelvo
