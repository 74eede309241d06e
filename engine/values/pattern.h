// The two patterns that names and text are compared with: SQL's LIKE and the shell's GLOB. Both
// take text as UTF-8, so that "one character" is one to its reader; a byte that is not UTF-8 counts
// as a character. Neither allocates, and the time is at most that of pattern length times text
// length.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

/// Whether `text`, whole, is what the SQL pattern says: "%" any run of characters, "_" one
/// character, `escape` (a byte, or none) takes from the character behind it its meaning.
bool like(std::string_view pattern, std::string_view text, std::optional<char> escape = {});

/// What stands behind LIKE.
struct LikePattern {
  std::string text;
  std::optional<char> escape;

  [[nodiscard]] bool matches(std::string_view whole) const { return like(text, whole, escape); }
};

/// Whether `path`, whole, is what the shell pattern says: "*" any run without "/", "?" one
/// character but "/", "[a-z]" or "[!a-z]" one of a set, "\" takes from the character behind it its
/// meaning.
/// "**" crosses "/", and "**/" at the beginning of a name stands for any number of groups, none
/// included.
bool glob(std::string_view pattern, std::string_view path);

}  // namespace kelvo
