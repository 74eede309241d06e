// Names of family files. A name is a user's word, hence it is never a format before it was taken
// apart.
#include "storage/family.h"

#include <cctype>
#include <optional>

namespace kelvo {
namespace {

struct Pattern {
  std::size_t at = 0;  // of the '%'
  std::size_t length = 0;
  bool zeros = false;
  std::size_t width = 0;
};

constexpr std::size_t widest = 20;

bool is_digit(char byte) { return std::isdigit(static_cast<unsigned char>(byte)) != 0; }

std::optional<Pattern> conversion_at(const std::string& path, std::size_t at) {
  Pattern pattern;
  pattern.at = at;
  std::size_t next = at + 1;
  pattern.zeros = next < path.size() && path[next] == '0';
  while (next < path.size() && is_digit(path[next]) && pattern.width <= widest)
    pattern.width = pattern.width * 10 + static_cast<std::size_t>(path[next++] - '0');
  if (next >= path.size() || path[next] != 'd' || pattern.width > widest) return std::nullopt;
  pattern.length = next + 1 - at;
  return pattern;
}

// The only conversion in the last name of the path.
std::optional<Pattern> find_pattern(const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;
  const std::size_t at = path.find('%', name);
  if (at == std::string::npos || path.find('%', at + 1) != std::string::npos) return std::nullopt;
  return conversion_at(path, at);
}

}  // namespace

bool is_family(const std::string& path) { return find_pattern(path).has_value(); }

std::string family_member(const std::string& path, int number) {
  const Pattern pattern = find_pattern(path).value_or(Pattern());
  std::string digits = std::to_string(number);
  if (digits.size() < pattern.width)
    digits.insert(0, pattern.width - digits.size(), pattern.zeros ? '0' : ' ');
  std::string member = path;
  return member.replace(pattern.at, pattern.length, digits);
}

std::string family_format(const std::string& path) {
  const std::size_t pattern = find_pattern(path).value_or(Pattern()).at;
  std::string format;
  for (std::size_t i = 0; i < path.size(); ++i) {
    format += path[i];
    if (path[i] == '%' && i != pattern) format += '%';
  }
  return format;
}

}  // namespace kelvo
