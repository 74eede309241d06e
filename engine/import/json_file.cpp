// The parser hands over events; elements are put together from them, so that memory holds one
// element at a time.
#include "import/json_file.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <vector>

#include "error.h"
#include "import/json_input.h"
#include "import/json_value.h"

namespace kelvo {
namespace {

constexpr std::size_t elements_per_block = 16384;

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
  Builder(const Type& type, JsonInput& input, const ElementStream::Taker& take)
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
      put_json(elements_, elements_.type(), 0, literal);
    } catch (const StatementError& error) {
      input_.fail(error);
    }
    if (elements_.count() == elements_per_block) flush();
    return true;
  }

  JsonInput& input_;
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

  JsonInput input_;
  bool header_;
};

}  // namespace

std::unique_ptr<ElementStream> open_json(const std::string& path, const Type& /*type*/,
                                         bool header) {
  return std::make_unique<JsonStream>(path, header);
}

}  // namespace kelvo
