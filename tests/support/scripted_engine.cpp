// The scripted engine's state: the answer being read, how far it was read, and the record.
#include "support/scripted_engine.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace scripted {

ScriptedEngine& engine() {
  static ScriptedEngine the_engine;
  return the_engine;
}

Answer& ScriptedEngine::answers(const std::string& statement) {
  return script_[statement].emplace_back();
}

Answer& ScriptedEngine::fails(const std::string& statement, std::int32_t status,
                              std::int32_t position, const std::string& message) {
  Answer& answer = answers(statement);
  answer.status = status;
  answer.position = position;
  answer.message = message;
  return answer;
}

void ScriptedEngine::record(const std::string& line) {
  calls_.push_back(line);
  if (sink_) {
    sink_(line);
  }
}

void ScriptedEngine::enter(const char* operation, std::string_view argument) {
  // What was lent before is no longer valid: spoil it, for a caller that reads it too late to be
  // caught by its output (and by the address sanitizer, since the block goes away too).
  std::fill(lent_.begin(), lent_.end(), '\xA5');
  lent_ = std::vector<char>();
  record(std::string(operation) + "(" + std::string(argument) + ")");
  const int occurrence = ++occurrences_[operation];
  for (const Event& event : current_.events) {
    if (event.operation == operation && event.occurrence == occurrence) {
      event.action();
    }
  }
}

std::int32_t ScriptedEngine::execute(const char* operation, const char* statement) {
  executed_.emplace_back(statement);
  current_ = Answer();
  const auto scripted = script_.find(statement);
  if (scripted != script_.end()) {
    current_ = scripted->second.front();
    if (scripted->second.size() > 1) {
      scripted->second.pop_front();
    }
  }
  occurrences_.clear();
  row_ = 0;
  element_ = 0;
  enter(operation, statement);
  if (current_.group_afterwards) {
    groups_ = {*current_.group_afterwards};
  }
  return current_.status;
}

const char* ScriptedEngine::message(const char* operation) {
  enter(operation, "");
  return lend_text(current_.message);
}

std::int32_t ScriptedEngine::position(const char* operation) {
  enter(operation, "");
  return current_.position;
}

std::int32_t ScriptedEngine::next_row(const char* operation, const kelvo_cursor* cursor) {
  enter(operation, cursor);
  element_ = 0;
  return row_++ < current_.rows.size() ? 0 : current_.end;
}

std::int32_t ScriptedEngine::data_type(const char* operation, const kelvo_cursor* cursor) {
  enter(operation, cursor);
  return current_row(operation).type;
}

const char* ScriptedEngine::text(const char* operation, const kelvo_cursor* cursor) {
  enter(operation, cursor);
  const Row& row = current_row(operation);
  return row.text ? lend_text(*row.text) : nullptr;
}

void ScriptedEngine::clear(const char* operation, const kelvo_cursor* cursor) {
  enter(operation, cursor);
  current_.rows.clear();
}

std::int32_t ScriptedEngine::element_count(const char* operation, const kelvo_cursor* cursor) {
  enter(operation, cursor);
  const Row& row = current_row(operation);
  return row.claimed_count.value_or(static_cast<std::int32_t>(row.elements.size()));
}

std::int32_t ScriptedEngine::next_element(const char* operation, const kelvo_cursor* cursor) {
  enter(operation, cursor);
  return element_++ < current_row(operation).elements.size() ? 0 : current_.end;
}

const char* ScriptedEngine::group_in_use(const char* operation) {
  enter(operation, "");
  const Group group = groups_.front();
  if (groups_.size() > 1) {
    groups_.pop_front();
  }
  return group ? lend_text(*group) : nullptr;
}

std::int32_t ScriptedEngine::last_data_count(const char* operation) {
  enter(operation, "");
  return current_.data_count;
}

const char* ScriptedEngine::compiler_text(const char* operation) {
  enter(operation, "");
  return lend_text(compiler_);
}

const char* ScriptedEngine::architecture_text(const char* operation) {
  enter(operation, "");
  return lend_text(architecture_);
}

void ScriptedEngine::wait_for_interrupt() {
  sigset_t interrupt;
  sigset_t before;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  sigprocmask(SIG_BLOCK, &interrupt, &before);
  record("waiting");
  sigsuspend(&before);  // lets the signal in and waits for it in one step: one sent since the
                        // record is not lost
  sigprocmask(SIG_SETMASK, &before, nullptr);
}

namespace {

/// For calls that no engine can answer; the program makes none, so the test run ends here.
[[noreturn]] void refuse(const char* operation, const char* reason) {
  std::fprintf(stderr, "scripted engine: %s called without a current %s\n", operation, reason);
  std::abort();
}

}  // namespace

const Row& ScriptedEngine::current_row(const char* operation) const {
  if (row_ == 0 || row_ > current_.rows.size()) {
    refuse(operation, "row");
  }
  return current_.rows[row_ - 1];
}

const Element& ScriptedEngine::element_at(const char* operation, std::size_t index) const {
  const Row& row = current_row(operation);
  if (index >= row.elements.size()) {
    refuse(operation, "element");
  }
  return row.elements[index];
}

const char* ScriptedEngine::lend_text(const std::string& text) {
  return lend(text.c_str(), text.size() + 1);
}

char* ScriptedEngine::lend(const void* bytes, std::size_t size) {
  lent_.resize(size);
  std::memcpy(lent_.data(), bytes, size);
  return lent_.data();
}

}  // namespace scripted
