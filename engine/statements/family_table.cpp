// The table of statement families, and how a form is chosen in any such table.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "session.h"
#include "statements/family.h"

namespace kelvo {
namespace {

// Each form of SHOW says by itself what it calls.
constexpr std::array families = {
    Form{"CREATE", run_create}, Form{"ALTER", run_alter},
    Form{"RENAME", run_rename}, Form{"COPY", run_copy},
    Form{"DROP", run_drop},     Form{"INSERT", run_insert},
    Form{"SELECT", run_select}, Form{"SHOW", run_show, Calls::no_hdf5},
    Form{"USE", run_use},       Form{"FLUSH", run_flush},
    Form{"CLOSE", run_close},   Form{"SET", run_set},
};

std::string_view word_at(std::string_view keywords, std::size_t index) {
  for (; index > 0; --index) keywords.remove_prefix(keywords.find(' ') + 1);
  return keywords.substr(0, keywords.find(' '));
}

std::size_t word_count(std::string_view keywords) {
  return static_cast<std::size_t>(std::count(keywords.begin(), keywords.end(), ' ')) + 1;
}

std::string joined(const std::vector<std::string_view>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? " or " : ", ";
    text += words[i];
  }
  return text;
}

// The words that could stand where the text stops matching any form.
[[noreturn]] void fail_no_form(std::span<const Form> forms, Parser& parser) {
  std::size_t deepest = 0;
  for (const Form& form : forms) deepest = std::max(deepest, parser.matching_words(form.keywords));
  std::vector<std::string_view> words;
  for (const Form& form : forms) {
    if (parser.matching_words(form.keywords) != deepest) continue;
    const std::string_view word = word_at(form.keywords, deepest);
    if (std::find(words.begin(), words.end(), word) == words.end()) words.push_back(word);
  }
  for (std::size_t i = 0; i < deepest; ++i) parser.take();
  parser.fail_expected(joined(words));
}

}  // namespace

std::span<const Form> statement_families() { return families; }

Answer run_form(std::span<const Form> forms, Parser& parser, Session& session) {
  const Form* best = nullptr;
  for (const Form& form : forms) {
    const std::size_t words = word_count(form.keywords);
    if (parser.matching_words(form.keywords) == words &&
        (best == nullptr || words > word_count(best->keywords))) {
      best = &form;
    }
  }
  if (best == nullptr) fail_no_form(forms, parser);
  parser.expect_keyword(best->keywords);
  session.understood(best->keywords);
  if (best->calls == Calls::hdf5) session.start_hdf5();
  return best->run(parser, session);
}

}  // namespace kelvo
