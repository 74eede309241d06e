// Reads scripts of the scripted engine: one function for each keyword.
#include "support/script_file.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace scripted {
namespace {

/// The line being read and what it may add to.
struct Reader {
  ScriptedEngine* engine;
  std::vector<Group> groups;
  Answer* answer = nullptr;
  std::istringstream arguments;

  Answer& open_answer() const {
    if (answer == nullptr) {
      throw std::runtime_error("no statement is open");
    }
    return *answer;
  }

  std::int32_t number() {
    std::int32_t value = 0;
    if (!(arguments >> value)) {
      throw std::runtime_error("number expected");
    }
    return value;
  }

  std::string word() {
    std::string value;
    arguments >> value;
    return value;
  }

  /// The rest of the line, after one blank where something was read before it.
  std::string rest() {
    if (arguments.tellg() > 0) {
      arguments.get();
    }
    std::string escaped;
    std::getline(arguments, escaped);
    return unescape(escaped);
  }

  static std::string unescape(const std::string& escaped) {
    std::string text;
    for (std::size_t i = 0; i < escaped.size(); ++i) {
      if (escaped[i] != '\\') {
        text += escaped[i];
      } else if (escaped.compare(i, 2, "\\x") == 0) {
        text += static_cast<char>(std::stoi(escaped.substr(i + 2, 2), nullptr, 16));
        i += 3;
      } else {
        text += escaped.at(++i);
      }
    }
    return text;
  }
};

/// Whole numbers keep all of their 64 bits; everything else ("1.5", "nan", "-inf") is a double.
Element element_of(const std::string& word) {
  if (word.find_first_not_of("-0123456789") != std::string::npos) {
    return std::strtod(word.c_str(), nullptr);  // which takes denormal numbers too, unlike stod
  }
  return word.front() == '-' ? Element(std::stoll(word)) : Element(std::stoull(word));
}

void read_row(Reader& line) {
  const std::int32_t type = line.number();
  std::vector<Element> elements;
  for (std::string word = line.word(); !word.empty(); word = line.word()) {
    elements.push_back(element_of(word));
    word.clear();
  }
  line.open_answer().row(type, std::move(elements));
}

void read_failure(Reader& line) {
  Answer& answer = line.open_answer();
  answer.status = line.number();
  answer.position = line.number();
  answer.message = line.rest();
}

void read_interruption(Reader& line) {
  const std::string operation = line.word();
  line.open_answer().interrupted_in(operation, line.number());
}

void read_wait(Reader& line) {
  const std::string operation = line.word();
  ScriptedEngine* engine = line.engine;
  line.open_answer().on(operation, line.number(), [engine] { engine->wait_for_interrupt(); });
}

void read_characters(Reader& line) {
  const std::int32_t type = line.number();
  line.open_answer().characters(type, line.rest());
}

void read_text(Reader& line) {
  const std::int32_t type = line.number();
  line.open_answer().text(type, line.rest());
}

struct Keyword {
  std::string_view name;
  void (*read)(Reader&);
};

constexpr Keyword keywords[] = {
    {"compiler", [](Reader& line) { line.engine->compiler(line.rest()); }},
    {"architecture", [](Reader& line) { line.engine->architecture(line.rest()); }},
    {"group", [](Reader& line) { line.groups.emplace_back(line.rest()); }},
    {"no-group", [](Reader& line) { line.groups.emplace_back(std::nullopt); }},
    {"statement", [](Reader& line) { line.answer = &line.engine->answers(line.rest()); }},
    {"row", read_row},
    {"characters", read_characters},
    {"text", read_text},
    {"null-text", [](Reader& line) { line.open_answer().text(line.number(), std::nullopt); }},
    {"claiming", [](Reader& line) { line.open_answer().claiming(line.number()); }},
    {"count", [](Reader& line) { line.open_answer().count(line.number()); }},
    {"ending-with", [](Reader& line) { line.open_answer().ending_with(line.number()); }},
    {"fails", read_failure},
    {"using-group", [](Reader& line) { line.open_answer().using_group(line.rest()); }},
    {"using-no-group", [](Reader& line) { line.open_answer().using_group(std::nullopt); }},
    {"interrupted-in", read_interruption},
    {"waiting-in", read_wait},
};

void read_line(const std::string& text, Reader* reader) {
  const std::size_t blank = text.find(' ');
  const std::string name = text.substr(0, blank);
  const auto* const keyword =
      std::find_if(std::begin(keywords), std::end(keywords),
                   [&name](const Keyword& row) { return row.name == name; });
  if (keyword == std::end(keywords)) {
    throw std::runtime_error("unknown keyword");
  }
  reader->arguments = std::istringstream(blank == std::string::npos ? "" : text.substr(blank + 1));
  keyword->read(*reader);
}

}  // namespace

void read_script(std::istream& script, ScriptedEngine* engine) {
  Reader reader{engine, {}, nullptr, {}};
  for (std::string text; std::getline(script, text);) {
    if (text.empty() || text.front() == '#') {
      continue;
    }
    try {
      read_line(text, &reader);
    } catch (const std::exception& error) {
      throw std::runtime_error("script line \"" + text + "\": " + error.what());
    }
  }
  if (!reader.groups.empty()) {
    engine->groups(std::move(reader.groups));
  }
}

}  // namespace scripted
