// One loop over lines and fields, made for each type of number and for lines of several.
#include "import/number_lines.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "import/plain_number.h"

namespace kelvo {
namespace {

// Stops at the text's end, which is a line end.
const char* skip_blanks(const char* at, char separator) {
  while (*at == ' ' || (*at == '\t' && separator != '\t')) ++at;
  return at;
}

// Null where there is none.
const char* pass_separator(const char* at, char separator) {
  const char* const behind = skip_blanks(at, separator);
  if (separator == ' ') return behind == at ? nullptr : behind;
  return *behind == separator ? behind + 1 : nullptr;
}

const char* pass_line_end(const char* at, char separator) {
  at = skip_blanks(at, separator);
  if (*at == '\r') ++at;
  return *at == '\n' ? at + 1 : nullptr;
}

// `read` is called as read(field, at, end, to).
template <typename Read>
const char* read_line(const NumberLine& line, const char* at, const char* end, std::byte* elements,
                      Read read) {
  bool is_first = true;
  for (std::size_t i = 0; i < line.elements; ++i, elements += line.element_bytes) {
    for (const NumberLine::Field& field : line.fields) {
      if (!is_first) at = pass_separator(at, line.separator);
      is_first = false;
      if (at == nullptr) return nullptr;
      at = read(field, skip_blanks(at, line.separator), end, elements + field.offset);
      if (at == nullptr) return nullptr;
    }
  }
  return pass_line_end(at, line.separator);
}

template <typename Read>
LinesRead read_lines(const NumberLine& line, std::string_view text, std::size_t most,
                     std::byte* elements, Read read) {
  const std::size_t line_bytes = line.elements * line.element_bytes;
  const char* at = text.data();
  const char* const end = at + text.size();
  std::size_t lines = 0;
  for (; lines < most && at < end; ++lines, elements += line_bytes) {
    const char* const behind = read_line(line, at, end, elements, read);
    if (behind == nullptr) break;
    at = behind;
  }
  return {lines, static_cast<std::size_t>(at - text.data())};
}

LinesRead read_mixed(const NumberLine& line, std::string_view text, std::size_t most,
                     std::byte* elements) {
  return read_lines(line, text, most, elements,
                    [](const NumberLine::Field& field, const char* at, const char* end,
                       std::byte* to) { return field.read(at, end, to); });
}

template <typename Number>
LinesRead read_same(const NumberLine& line, std::string_view text, std::size_t most,
                    std::byte* elements) {
  return read_lines(line, text, most, elements,
                    [](const NumberLine::Field& /*field*/, const char* at, const char* end,
                       std::byte* to) { return read_number<Number>(at, end, to); });
}

template <typename Number>
constexpr std::pair<NumberReader, LinesReader> readers_of() {
  return {read_number<Number>, read_same<Number>};
}

}  // namespace

LinesReader lines_reader(const NumberLine& line) {
  static constexpr std::array readers = {readers_of<std::int8_t>(),   readers_of<std::int16_t>(),
                                         readers_of<std::int32_t>(),  readers_of<std::int64_t>(),
                                         readers_of<std::uint8_t>(),  readers_of<std::uint16_t>(),
                                         readers_of<std::uint32_t>(), readers_of<std::uint64_t>(),
                                         readers_of<float>(),         readers_of<double>()};
  const NumberReader first = line.fields[0].read;
  const bool is_mixed =
      std::any_of(line.fields.begin(), line.fields.end(),
                  [first](const NumberLine::Field& field) { return field.read != first; });
  const auto* const found = std::find_if(readers.begin(), readers.end(),
                                         [first](const auto& pair) { return pair.first == first; });
  return is_mixed || found == readers.end() ? read_mixed : found->second;
}

}  // namespace kelvo
