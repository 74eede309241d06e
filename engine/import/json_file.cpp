// The parser hands over events; elements are put together from them, so that memory holds one
// element at a time.
#include "import/json_file.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include "error.h"
#include "import/field.h"
#include "import/host_file.h"
#include "values/text.h"

namespace kelvo {
namespace {

constexpr std::size_t elements_per_block = 16384;

struct CloseFile {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

// The parser's input: bytes of the file, counted by line.
class Input {
 public:
  using Ch = char;

  explicit Input(const std::string& path) : path_(path), file_(open_host_file(path)) {
    fill();
    if (std::string_view(buffer_.data(), end_).starts_with(byte_order_mark))
      at_ = line_begin_ = byte_order_mark.size();
  }

  [[nodiscard]] Ch Peek() const { return at_ < end_ ? buffer_[at_] : '\0'; }
  Ch Take() {
    const Ch byte = Peek();
    if (byte == '\n') {
      ++line_;
      line_begin_ = Tell() + 1;
    }
    if (++at_ >= end_) fill();
    return byte;
  }
  [[nodiscard]] std::size_t Tell() const { return before_ + at_; }

  // Of the interface, for parsing in place, which is not done here.
  static Ch* PutBegin() { return nullptr; }
  void Put(Ch /*byte*/) {}
  void Flush() {}
  static std::size_t PutEnd(Ch* /*begin*/) { return 0; }

  [[nodiscard]] bool at_end() const { return at_ >= end_; }

  [[noreturn]] void fail(const StatementError& error) const {
    fail_in_file(path_, line_, Tell() - line_begin_ + 1, error);
  }

 private:
  void fill() {
    before_ += end_;
    at_ = 0;
    end_ = std::fread(buffer_.data(), 1, buffer_.size(), file_.get());
    if (end_ == 0 && std::ferror(file_.get()) != 0) refuse_host_file(path_);
  }

  std::string path_;
  std::unique_ptr<std::FILE, CloseFile> file_;
  std::array<char, 65536> buffer_{};
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::size_t before_ = 0;  // bytes of the file before the buffer
  std::size_t line_ = 1;
  std::size_t line_begin_ = 0;
};

// Values within values; beyond it the stack would overflow.
constexpr std::size_t most_nested = 256;

// A byte that is not UTF-8 is written as the escape \udc80 to \udcff, which the parser hands over
// as if it were a character: ED B2 80 to ED B3 BF.
std::string plain_bytes(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[i + k]); };
    const bool escaped = i + 2 < text.size() && byte(0) == 0xed && (byte(1) & 0xfeU) == 0xb2;
    bytes +=
        escaped ? static_cast<char>((byte(1) & 1U) << 6U | (byte(2) & 0x3fU) | 0x80U) : text[i];
    if (escaped) i += 2;
  }
  return bytes;
}

bool from_hexadecimal(const std::string& digits, std::string* bytes) {
  bytes->clear();
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    unsigned value = 0;
    const auto result = std::from_chars(digits.data() + i, digits.data() + i + 2, value, 16);
    if (result.ptr != digits.data() + i + 2) return false;
    *bytes += static_cast<char>(value);
  }
  return digits.size() % 2 == 0;
}

// How deeply arrays are nested in one element.
std::size_t list_depth(const Type& type) {
  if (type.kind == Kind::sequence) return 1 + list_depth(type.base[0]);
  if (type.kind == Kind::array) return type.extents.size() + list_depth(type.base[0]);
  return 0;
}

// What the text of a JSON value means for the type that it is meant for; containers take their
// members along.
class Builder {
 public:
  Builder(const Type& type, Input& input, const ElementStream::Taker& take)
      : input_(input), take_(take), elements_(type), depth_of_element_(list_depth(type)) {}

  // Hands over what has come in so far.
  void flush() {
    take_(elements_);
    elements_.clear();
  }

  // --- the parser's events ---
  bool Null() { return add(word("NULL")); }
  bool Bool(bool value) { return add(word(value ? "TRUE" : "FALSE")); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    Literal literal;
    literal.kind = LiteralKind::word;
    literal.text.assign(text, length);
    return add(std::move(literal));
  }
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    Literal literal;
    literal.kind = LiteralKind::string;
    literal.text = plain_bytes(std::string_view(text, length));
    return add(std::move(literal));
  }
  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    open_.back().names.push_back(plain_bytes(std::string_view(text, length)));
    return true;
  }
  bool StartObject() { return start(LiteralKind::object); }
  bool EndObject(rapidjson::SizeType /*count*/) { return end(); }
  bool StartArray() {
    if (!open_.empty()) return start(LiteralKind::list);
    ++outer_;
    if (!depth_known_) ++leading_;
    // The innermost arrays of the first value belong to its elements; how many of them were passed
    // is known only when something else comes.
    if (depth_known_ && outer_ > outer_of_element_) {
      --outer_;
      return start(LiteralKind::list);
    }
    return true;
  }
  bool EndArray(rapidjson::SizeType /*count*/) {
    if (!depth_known_) settle_depth();
    if (!open_.empty()) return end();
    --outer_;
    return true;
  }
  // Numbers come as their text; these are for a parser set otherwise.
  static bool Int(int /*value*/) { return false; }
  static bool Uint(unsigned /*value*/) { return false; }
  static bool Int64(std::int64_t /*value*/) { return false; }
  static bool Uint64(std::uint64_t /*value*/) { return false; }
  static bool Double(double /*value*/) { return false; }

 private:
  static Literal word(const char* text) {
    Literal literal;
    literal.kind = LiteralKind::word;
    literal.text = text;
    return literal;
  }

  void settle_depth() {
    depth_known_ = true;
    outer_of_element_ = leading_ > depth_of_element_ ? leading_ - depth_of_element_ : 0;
    for (; outer_ > outer_of_element_; --outer_) start(LiteralKind::list);
  }

  bool start(LiteralKind kind) {
    if (!depth_known_) settle_depth();
    if (open_.size() == most_nested) {
      input_.fail(StatementError(
          Status::out_of_range, "More than " + std::to_string(most_nested) + " values are nested"));
    }
    open_.emplace_back().kind = kind;
    return true;
  }

  bool end() {
    Literal literal = std::move(open_.back());
    open_.pop_back();
    return add(std::move(literal));
  }

  bool add(Literal literal) {
    if (!depth_known_) settle_depth();
    if (!open_.empty()) {
      open_.back().items.push_back(std::move(literal));
      return true;
    }
    try {
      elements_.append_room(1);
      put(elements_.type(), 0, literal);
    } catch (const StatementError& error) {
      input_.fail(error);
    }
    if (elements_.count() == elements_per_block) flush();
    return true;
  }

  void put(const Type& type, std::size_t offset, Literal& literal) {
    if (type.kind == Kind::compound && literal.kind == LiteralKind::object) {
      return put_members(type, offset, literal);
    }
    // Most of all values are plain numbers: they take the short way of a field.
    if (is_number(literal) && type.is_numeric())
      return put_field(elements_, type, offset, literal.text);
    fit(type, literal);
    elements_.put(type, offset, literal);
  }

  void put_members(const Type& type, std::size_t offset, Literal& literal) {
    for (const Member& member : type.members) {
      std::size_t i = 0;
      while (i < literal.names.size() && literal.names[i] != member.name) ++i;
      if (i == literal.names.size()) {
        throw StatementError(Status::out_of_range,
                             "A value for the member " + quoted(member.name) + " is missing");
      }
      put(member.type, offset + member.offset, literal.items[i]);
    }
    for (const std::string& name : literal.names) {
      const bool known = std::any_of(type.members.begin(), type.members.end(),
                                     [&name](const Member& member) { return member.name == name; });
      if (!known)
        throw StatementError(Status::does_not_exist, "The compound has no member " + quoted(name));
    }
  }

  // JSON's words, numbers and strings become what the type takes.
  void fit(const Type& type, Literal& literal) {
    if (literal.kind == LiteralKind::list) return fit_items(type, literal);
    if (literal.kind == LiteralKind::object) return fit_members(type, literal);
    if (literal.kind == LiteralKind::string) return fit_string(type, literal);
    if (literal.kind != LiteralKind::word) return;
    if (is_number(literal)) {
      literal = field_literal(type, literal.text);
    } else if (literal.text == "NULL") {
      if (type.kind == Kind::real) literal = field_literal(type, "NAN");
    } else if (type.kind == Kind::integer) {
      literal = field_literal(type, literal.text == "TRUE" ? "1" : "0");
    }
  }

  // A list within an array may be one of its lines, or an element that is a list itself.
  void fit_items(const Type& type, Literal& literal) {
    if (type.kind != Kind::array && type.kind != Kind::sequence) return;
    const bool base_is_list =
        type.base[0].kind == Kind::array || type.base[0].kind == Kind::sequence;
    for (Literal& item : literal.items) {
      const bool is_line = item.kind == LiteralKind::list && !base_is_list;
      fit(is_line ? type : type.base[0], item);
    }
  }

  void fit_members(const Type& type, Literal& literal) {
    for (std::size_t i = 0; i < literal.names.size(); ++i) {
      for (const Member& member : type.members) {
        if (member.name == literal.names[i]) fit(member.type, literal.items[i]);
      }
    }
  }

  static void fit_string(const Type& type, Literal& literal) {
    if (type.kind != Kind::opaque) return;
    std::string bytes;
    if (!from_hexadecimal(literal.text, &bytes)) {
      throw StatementError(Status::wrong_kind, "Value " + quoted(literal.text) +
                                                   " is no value of " + type_name(type) +
                                                   " (two hexadecimal digits a byte)");
    }
    literal.kind = LiteralKind::bytes;
    literal.text = std::move(bytes);
  }

  // The parser hands numbers over as their text.
  static bool is_number(const Literal& literal) {
    return literal.kind == LiteralKind::word &&
           (literal.text[0] == '-' || (literal.text[0] >= '0' && literal.text[0] <= '9'));
  }

  Input& input_;
  const ElementStream::Taker& take_;
  EncodedElements elements_;
  std::vector<Literal> open_;         // containers of the element that is being put together
  std::size_t depth_of_element_;      // arrays within an element
  std::size_t outer_ = 0;             // arrays around elements that are open
  std::size_t outer_of_element_ = 0;  // how many there are around each element
  std::size_t leading_ = 0;           // arrays that the file begins with
  bool depth_known_ = false;
};

constexpr unsigned parse_flags =
    rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseStopWhenDoneFlag |
    rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag;

class JsonStream : public ElementStream {
 public:
  JsonStream(const std::string& path, bool header) : input_(path), header_(header) {}

  void read_all(const Type& type, const Taker& take) override {
    rapidjson::Reader reader;
    Builder builder(type, input_, take);
    if (header_) skip_value(reader);
    for (skip_blanks(); !input_.at_end(); skip_blanks()) {
      if (reader.Parse<parse_flags>(input_, builder).IsError()) fail(reader);
    }
    builder.flush();
  }

 private:
  void skip_blanks() { rapidjson::SkipWhitespace(input_); }

  void skip_value(rapidjson::Reader& reader) {
    rapidjson::BaseReaderHandler<> nobody;
    skip_blanks();
    if (!input_.at_end() && reader.Parse<parse_flags>(input_, nobody).IsError()) fail(reader);
  }

  [[noreturn]] void fail(const rapidjson::Reader& reader) const {
    std::string why = rapidjson::GetParseError_En(reader.GetParseErrorCode());
    if (why.ends_with('.')) why.pop_back();
    input_.fail(StatementError(Status::wrong_kind, "Not JSON: " + why));
  }

  Input input_;
  bool header_;
};

}  // namespace

std::unique_ptr<ElementStream> open_json(const std::string& path, const Type& /*type*/,
                                         bool header) {
  return std::make_unique<JsonStream>(path, header);
}

}  // namespace kelvo
