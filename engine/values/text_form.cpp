// Makes forms and goes through them.
#include "values/text_form.h"

#include <cstring>

#include "values/text_walk.h"

namespace kelvo {
namespace {

// Constants are copied in pieces of this size, which takes a few instructions; most are one piece.
constexpr std::size_t piece = 16;

// Arrays with more elements are written by a loop: their form would be as long.
constexpr std::size_t longest_array = 64;

std::size_t in_pieces(std::size_t size) { return (size + piece - 1) / piece * piece; }

// Where the text goes on.
char* make_room(std::size_t room, std::string* text) {
  const std::size_t size = text->size();
  text->resize(size + room);
  return text->data() + size;
}

// Bytes up to the next whole piece are written too.
char* copy_constant(const char* constant, std::size_t size, char* to) {
  for (std::size_t at = 0; at < size; at += piece) std::memcpy(to + at, constant + at, piece);
  return to + size;
}

}  // namespace

// Collects steps from a walk over the type.
class TextFormBuilder {
 public:
  explicit TextFormBuilder(TextForm* form) : form_(*form) {}

  static bool is_value(const Type& type) {
    return type.kind == Kind::array && type.array_length() > longest_array;
  }

  void add_constant(std::string_view constant) { constant_ += constant; }

  void add_value(const Type& type, std::size_t offset) {
    add_step({constant_.size(), number_writer(type), &type, offset, /*is_plain=*/false});
  }

  /// A value that stands alone: of those inside it, none does.
  void add_plain(const Type& type, std::size_t offset) {
    const std::size_t first = form_.steps_.size();
    walk_text(type, offset, *this);
    const bool has_parts = type.kind == Kind::compound || type.kind == Kind::array;
    if (!has_parts) form_.steps_[first].is_plain = true;
  }

  void finish() { add_step({constant_.size(), nullptr, nullptr, 0, false}); }

 private:
  void add_step(const TextForm::Step& step) {
    const std::size_t size = in_pieces(constant_.size());
    form_.rooms_.back() += size + (step.write != nullptr ? number_room : 0);
    if (step.write == nullptr && step.type != nullptr) form_.rooms_.push_back(0);
    constant_.resize(size);
    form_.constants_ += constant_;
    form_.steps_.push_back(step);
    constant_.clear();
  }

  TextForm& form_;
  std::string constant_;  // since the last value
};

TextForm::TextForm(const Type& type, bool columns) : rooms_(1) {
  TextFormBuilder builder(this);
  if (columns) {
    for (const Member& member : type.members) {
      if (member.offset > 0) builder.add_constant("\t");
      builder.add_plain(member.type, member.offset);
    }
  } else {
    builder.add_plain(type, 0);
  }
  builder.finish();
}

std::optional<std::size_t> TextForm::room() const {
  if (rooms_.size() > 1) return std::nullopt;
  return rooms_.front();
}

char* TextForm::write(const std::byte* element, char* text) const {
  const char* constant = constants_.data();
  for (const Step& step : steps_) {
    text = copy_constant(constant, step.constant_size, text);
    constant += in_pieces(step.constant_size);
    if (step.write != nullptr) text = step.write(element + step.offset, text);
  }
  return text;
}

void TextForm::append(const std::byte* element, const ReferenceNamer& namer,
                      std::string* text) const {
  const char* constant = constants_.data();
  const std::size_t* room = rooms_.data();
  char* to = make_room(*room++, text);
  for (const Step& step : steps_) {
    to = copy_constant(constant, step.constant_size, to);
    constant += in_pieces(step.constant_size);
    if (step.write != nullptr) {
      to = step.write(element + step.offset, to);
    } else if (step.type != nullptr) {
      text->resize(static_cast<std::size_t>(to - text->data()));
      append_value(step, element + step.offset, namer, text);
      to = make_room(*room++, text);
    }
  }
  text->resize(static_cast<std::size_t>(to - text->data()));
}

void TextForm::append_value(const Step& step, const std::byte* element, const ReferenceNamer& namer,
                            std::string* text) {
  return step.is_plain ? append_plain(*step.type, element, namer, text)
                       : append_nested(*step.type, element, namer, text);
}

}  // namespace kelvo
