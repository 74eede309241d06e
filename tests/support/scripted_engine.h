// A query engine that answers from a script held in memory and records every call made to it, so
// that the program can be tested without HDF5, with answers that no honest engine would give, and
// down to the order of its calls.
//
//   engine.answers("show group").row(KELVO_VARINT, {1, -2, 3}).count(3);
//   engine.fails("bad", /*status=*/-1, /*position=*/1, "Unknown statement");
//
// A statement that the script does not know succeeds with an empty result. A statement scripted
// several times gives its answers in turn; the last one stays.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "executor/kelvo.h"
#include "support/script.h"

namespace scripted {

using Calls = std::vector<std::string>;

class ScriptedEngine {
 public:
  // --- The script ---

  Answer& answers(const std::string& statement);
  Answer& fails(const std::string& statement, std::int32_t status, std::int32_t position,
                const std::string& message);

  /// What _kelvo_show_use_group answers, call by call; the last one stays. NULL unless given.
  void groups(std::vector<Group> in_turn) { groups_.assign(in_turn.begin(), in_turn.end()); }
  void compiler(const std::string& text) { compiler_ = text; }
  void architecture(const std::string& text) { architecture_ = text; }

  /// Called with each line of the record as it is made.
  void report_calls_to(std::function<void(const std::string&)> sink) { sink_ = std::move(sink); }

  /// Forgets the script and the record.
  void reset() { *this = ScriptedEngine(); }

  // --- The record ---

  /// Every call in the order made, as "operation(argument)": "kelvo_execute(show group)",
  /// "kelvo_cursor_next(null)", "_kelvo_get_compiler()". A cursor that is not NULL shows as
  /// "cursor".
  [[nodiscard]] const Calls& calls() const { return calls_; }
  /// The statements alone.
  [[nodiscard]] const Calls& executed() const { return executed_; }

  // --- The operations behind kelvo.h. Their names come from the caller, so that the record cannot
  // differ from them. ---

  std::int32_t execute(const char* operation, const char* statement);
  const char* message(const char* operation);
  std::int32_t position(const char* operation);
  std::int32_t next_row(const char* operation, const kelvo_cursor* cursor);
  std::int32_t data_type(const char* operation, const kelvo_cursor* cursor);
  const char* text(const char* operation, const kelvo_cursor* cursor);
  void clear(const char* operation, const kelvo_cursor* cursor);
  std::int32_t element_count(const char* operation, const kelvo_cursor* cursor);
  std::int32_t next_element(const char* operation, const kelvo_cursor* cursor);
  const char* group_in_use(const char* operation);
  std::int32_t last_data_count(const char* operation);
  const char* compiler_text(const char* operation);
  const char* architecture_text(const char* operation);

  template <typename Number>
  const Number* value(const char* operation, const kelvo_cursor* cursor) {
    enter(operation, cursor);
    return lend_number(element_at(operation, 0).as<Number>());
  }

  template <typename Number>
  const Number* element(const char* operation, const kelvo_cursor* cursor) {
    enter(operation, cursor);
    return lend_number(element_at(operation, element_ - 1).as<Number>());
  }

  /// Blocks until SIGINT has been handled. The record says "waiting" before a signal can be missed.
  void wait_for_interrupt();

 private:
  void enter(const char* operation, std::string_view argument);
  void enter(const char* operation, const kelvo_cursor* cursor) {
    enter(operation, cursor == nullptr ? std::string_view("null") : std::string_view("cursor"));
  }
  void record(const std::string& line);
  const Row& current_row(const char* operation) const;
  const Element& element_at(const char* operation, std::size_t index) const;
  const char* lend_text(const std::string& text);
  char* lend(const void* bytes, std::size_t size);

  template <typename Number>
  const Number* lend_number(Number number) {
    return reinterpret_cast<const Number*>(lend(&number, sizeof number));
  }

  std::map<std::string, std::deque<Answer>> script_;
  std::deque<Group> groups_ = {std::nullopt};
  std::string compiler_ = "scripted";
  std::string architecture_ = "test";
  std::function<void(const std::string&)> sink_;

  Calls calls_;
  Calls executed_;

  Answer current_;                          // answer to the statement executed last
  std::map<std::string, int> occurrences_;  // calls since then, by operation
  std::size_t row_ = 0;  // rows and elements reached so far: 0 stands before the first
  std::size_t element_ = 0;
  std::vector<char> lent_;  // what the last call returned a pointer to; spoilt at the next call
};

/// The engine behind the 33 operations.
ScriptedEngine& engine();

}  // namespace scripted
