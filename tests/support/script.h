// What a scripted engine answers to a statement: rows of any type (true or lying), a failure, a
// group to change to, and things that happen while one of the engine's operations runs.
#pragma once

#include <csignal>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace scripted {

/// A number as the script gives it. It is converted only when a getter reads it, so that braces
/// like {1, -2, 3} serve every type. The conversion from numbers is implicit for the same reason.
class Element {
 public:
  template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
  Element(Number number) {
    if constexpr (std::is_floating_point_v<Number>) {
      value_ = static_cast<double>(number);
    } else if constexpr (std::is_signed_v<Number>) {
      value_ = static_cast<std::int64_t>(number);
    } else {
      value_ = static_cast<std::uint64_t>(number);
    }
  }

  template <typename Number>
  [[nodiscard]] Number as() const {
    return std::visit([](auto value) { return static_cast<Number>(value); }, value_);
  }

 private:
  std::variant<std::int64_t, std::uint64_t, double> value_;
};

struct Row {
  std::int32_t type;
  std::vector<Element> elements;              // one for a scalar row
  std::optional<std::string> text;            // of a VARCHAR row; none is a null string
  std::optional<std::int32_t> claimed_count;  // where the row lies about the number of its elements
};

/// Something that happens as the given operation is called for the given time (from 1) since the
/// statement began.
struct Event {
  std::string operation;
  int occurrence;
  std::function<void()> action;
};

/// Group in use; none is the engine's NULL.
using Group = std::optional<std::string>;

/// The answer to one statement. The functions add to it and return it, so that they can be chained.
struct Answer {
  std::int32_t status = 0;
  std::int32_t position = 0;
  std::string message;
  std::vector<Row> rows;
  std::int32_t data_count = 0;
  std::int32_t end = 1;  // what the `next` operations return after the last row or element
  std::optional<Group> group_afterwards;
  std::vector<Event> events;

  Answer& row(std::int32_t type, std::vector<Element> elements) {
    rows.push_back({type, std::move(elements), std::nullopt, std::nullopt});
    return *this;
  }
  /// A CHAR row: one element for each byte.
  Answer& characters(std::int32_t type, const std::string& bytes) {
    row(type, {});
    for (const char byte : bytes) {
      rows.back().elements.emplace_back(static_cast<unsigned char>(byte));
    }
    return *this;
  }
  /// A VARCHAR row; none for a null string.
  Answer& text(std::int32_t type, std::optional<std::string> value) {
    rows.push_back({type, {}, std::move(value), std::nullopt});
    return *this;
  }
  /// Makes the row added last claim another number of elements than it delivers.
  Answer& claiming(std::int32_t elements) {
    rows.back().claimed_count = elements;
    return *this;
  }
  /// The number of elements that the engine reports after the statement; 0 unless given.
  Answer& count(std::int32_t elements) {
    data_count = elements;
    return *this;
  }
  Answer& ending_with(std::int32_t result) {
    end = result;
    return *this;
  }
  Answer& using_group(Group group) {
    group_afterwards = std::move(group);
    return *this;
  }
  Answer& on(const std::string& operation, int occurrence, std::function<void()> action) {
    events.push_back({operation, occurrence, std::move(action)});
    return *this;
  }
  Answer& interrupted_in(const std::string& operation, int occurrence = 1) {
    return on(operation, occurrence, [] { static_cast<void>(raise(SIGINT)); });
  }
};

}  // namespace scripted
