// Matching by going back to the last wildcard alone: what lies before it was matched as early as
// possible already, so that trying earlier wildcards again could not help.
#include "values/pattern.h"

#include <cstddef>

namespace kelvo {
namespace {

constexpr char32_t broken_byte = 0x110000;  // added to a byte that is not UTF-8

struct Character {
  char32_t code;
  std::size_t length;  // in bytes
};

std::size_t utf8_length(unsigned char first) {
  if (first >= 0xc2 && first < 0xe0) return 2;
  if (first >= 0xe0 && first < 0xf0) return 3;
  if (first >= 0xf0 && first < 0xf5) return 4;
  return first < 0x80 ? 1 : 0;
}

// `text` is not empty.
Character first_character(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t length = utf8_length(first);
  if (length == 1) return {first, 1};
  if (length == 0 || length > text.size()) return {broken_byte + first, 1};
  char32_t code = first & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xc0U) != 0x80) return {broken_byte + first, 1};
    code = code << 6U | (byte & 0x3fU);
  }
  return {code, length};
}

enum class Star { none, in_name, across, directories };

// Where matching goes on when what came after the wildcard did not fit: the wildcard takes one
// more.
struct Retreat {
  Star star = Star::none;
  std::string_view pattern;  // behind the wildcard
  std::string_view text;     // not taken by the wildcard
};

// Lets the wildcard take one more character, or one more directory. False where it cannot.
bool advance(Retreat* retreat) {
  std::string_view& text = retreat->text;
  if (retreat->star == Star::none || text.empty()) return false;
  if (retreat->star == Star::in_name && text[0] == '/') return false;
  if (retreat->star == Star::directories) {
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) return false;
    text.remove_prefix(slash + 1);
  } else {
    text.remove_prefix(first_character(text).length);
  }
  return true;
}

// One step of a LIKE pattern that is no "%": consumes it and what it matches.
bool take_like(std::string_view* pattern, std::string_view* text, std::optional<char> escape) {
  const bool escaped = pattern->size() > 1 && escape && (*pattern)[0] == *escape;
  if (escaped) pattern->remove_prefix(1);
  const Character found = first_character(*text);
  const Character wanted = first_character(*pattern);
  if ((escaped || wanted.code != U'_') && wanted.code != found.code) return false;
  pattern->remove_prefix(wanted.length);
  text->remove_prefix(found.length);
  return true;
}

// Consumes a code, or the "\" before it with it. `pattern` is not empty.
char32_t take_quoted(std::string_view* pattern) {
  if ((*pattern)[0] == '\\' && pattern->size() > 1) pattern->remove_prefix(1);
  const Character character = first_character(*pattern);
  pattern->remove_prefix(character.length);
  return character.code;
}

// Consumes "[...]" and says whether the code is in it. A "[" that is never closed is no set: then
// nothing is consumed and nothing said.
std::optional<bool> take_set(std::string_view* pattern, char32_t code) {
  std::string_view rest = pattern->substr(1);
  const bool negated = rest.starts_with('!') || rest.starts_with('^');
  if (negated) rest.remove_prefix(1);
  bool found = false;
  for (bool first = true; !rest.empty() && (first || rest[0] != ']'); first = false) {
    const char32_t low = take_quoted(&rest);
    char32_t high = low;
    if (rest.size() > 1 && rest[0] == '-' && rest[1] != ']') {
      rest.remove_prefix(1);
      high = take_quoted(&rest);
    }
    found = found || (low <= code && code <= high);
  }
  if (rest.empty()) return std::nullopt;
  *pattern = rest.substr(1);
  return found != negated;
}

// One step of a GLOB pattern that is no star.
bool take_glob(std::string_view* pattern, std::string_view* text) {
  const Character found = first_character(*text);
  if ((*pattern)[0] == '?') {
    if (found.code == U'/') return false;
    pattern->remove_prefix(1);
  } else if (const std::optional<bool> in_set =
                 (*pattern)[0] == '[' ? take_set(pattern, found.code) : std::nullopt) {
    if (!*in_set || found.code == U'/') return false;
  } else if (take_quoted(pattern) != found.code) {
    return false;
  }
  text->remove_prefix(found.length);
  return true;
}

// Consumes one star or more; `at_name` where a name begins in the text.
Star take_stars(std::string_view* pattern, bool at_name) {
  std::size_t stars = 0;
  while (stars < pattern->size() && (*pattern)[stars] == '*') ++stars;
  pattern->remove_prefix(stars);
  if (stars == 1) return Star::in_name;
  if (!at_name || !pattern->starts_with('/')) return Star::across;
  pattern->remove_prefix(1);
  return Star::directories;
}

}  // namespace

bool like(std::string_view pattern, std::string_view text, std::optional<char> escape) {
  Retreat retreat;
  while (!text.empty() || !pattern.empty()) {
    if (pattern.starts_with('%') && escape != '%') {
      pattern.remove_prefix(1);
      retreat = {Star::across, pattern, text};
    } else if (text.empty() || pattern.empty() || !take_like(&pattern, &text, escape)) {
      if (!advance(&retreat)) return false;
      pattern = retreat.pattern;
      text = retreat.text;
    }
  }
  return true;
}

bool glob(std::string_view pattern, std::string_view path) {
  Retreat in_name;  // "*" cannot leave its name, so that "**" before it may have to take more
  Retreat across;
  std::string_view text = path;
  while (!text.empty() || !pattern.empty()) {
    if (pattern.starts_with('*')) {
      const std::size_t taken = path.size() - text.size();
      const Star star = take_stars(&pattern, taken == 0 || path[taken - 1] == '/');
      Retreat& retreat = star == Star::in_name ? in_name : across;
      if (star != Star::in_name) in_name = {};
      retreat = {star, pattern, text};
      continue;
    }
    if (!text.empty() && !pattern.empty() && take_glob(&pattern, &text)) continue;
    Retreat* retreat = &in_name;
    if (!advance(retreat)) {
      in_name = {};
      retreat = &across;
      if (!advance(retreat)) return false;
    }
    pattern = retreat->pattern;
    text = retreat->text;
  }
  return true;
}

}  // namespace kelvo
