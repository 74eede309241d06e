// Values are shown as they are walked: nothing is read ahead and no row is kept, so a large result
// streams, and Ctrl-C stops it between two values.
#include "executor/render.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <type_traits>

#include "executor/interrupt.h"
#include "executor/kelvo.h"
#include "executor/row_output.h"
#include "help/markup.h"

namespace {

bool interrupted() { return interrupt_status == 1; }

// What a value is shown as: integers of 8 and 16 bits as numbers too, floats widened to double.
template <typename Value>
using Shown = std::conditional_t<
    std::is_floating_point_v<Value>, double,
    std::conditional_t<sizeof(Value) == 8, Value,
                       std::conditional_t<std::is_signed_v<Value>, std::int32_t, std::uint32_t>>>;

// The current value of a row or of an element, by the engine's getter for its type.
template <auto get>
auto current() {
  const auto value = *get(nullptr);
  return static_cast<Shown<std::remove_const_t<decltype(value)>>>(value);
}

template <auto get>
void show_scalar() {
  add_number(current<get>(), '\n');
}

// Which element is the last is told by counting down alone, so a count that does not agree with the
// elements shows in the output. Unsigned, for a count of any sign to count down and wrap around
// without harm.
template <auto get>
void show_list() {
  auto remaining = static_cast<std::uint32_t>(kelvo_subcursor_get_count(nullptr));
  while (kelvo_subcursor_next(nullptr) == 0) {
    if (remaining == 1) {
      // The flag is not looked at here: the row loop does so after the line's end.
      add_number(current<get>());
      continue;
    }
    add_number(current<get>(), ' ');
    if (interrupted()) break;
    --remaining;
  }
  add_byte('\n');
}

// The count of elements is not asked: the characters need no separator, so none has to be known as
// the last.
void show_char() {
  while (kelvo_subcursor_next(nullptr) == 0) {
    add_byte(static_cast<char>(*kelvo_subcursor_get_unsigned_tinyint(nullptr)));
    if (interrupted()) break;
  }
  add_byte('\n');
}

void show_varchar() {
  const char* text = kelvo_cursor_get_char(nullptr);
  if (text == nullptr) return add_byte('\n');
  add_string(text, '\n');
}

enum class RunEnd { last_row, other_type, interrupted };

// Shows the current row and those of the same type that follow it: rows of one type mostly stand
// together, so that how to show them is looked up once and the loop holds nothing but that.
// `*data_type` is that of the current row.
template <void (*show_row)()>
RunEnd show_run(std::int32_t* data_type) {
  const std::int32_t shown = *data_type;
  for (;;) {
    show_row();
    if (interrupted()) return RunEnd::interrupted;
    if (kelvo_cursor_next(nullptr) != 0) return RunEnd::last_row;
    const std::int32_t next = kelvo_cursor_get_data_type(nullptr);
    if (next == shown) continue;
    *data_type = next;
    return RunEnd::other_type;
  }
}

using RunDisplay = RunEnd (*)(std::int32_t* data_type);

// In the order of the codes, each of which is a bit.
constexpr RunDisplay run_displays[] = {
    show_run<show_scalar<kelvo_cursor_get_tinyint>>,
    show_run<show_scalar<kelvo_cursor_get_unsigned_tinyint>>,
    show_run<show_scalar<kelvo_cursor_get_smallint>>,
    show_run<show_scalar<kelvo_cursor_get_unsigned_smallint>>,
    show_run<show_scalar<kelvo_cursor_get_int>>,
    show_run<show_scalar<kelvo_cursor_get_unsigned_int>>,
    show_run<show_scalar<kelvo_cursor_get_bigint>>,
    show_run<show_scalar<kelvo_cursor_get_unsigned_bigint>>,
    show_run<show_scalar<kelvo_cursor_get_float>>,
    show_run<show_scalar<kelvo_cursor_get_double>>,
    show_run<show_char>,
    show_run<show_list<kelvo_subcursor_get_tinyint>>,
    show_run<show_list<kelvo_subcursor_get_unsigned_tinyint>>,
    show_run<show_list<kelvo_subcursor_get_smallint>>,
    show_run<show_list<kelvo_subcursor_get_unsigned_smallint>>,
    show_run<show_list<kelvo_subcursor_get_int>>,
    show_run<show_list<kelvo_subcursor_get_unsigned_int>>,
    show_run<show_list<kelvo_subcursor_get_bigint>>,
    show_run<show_list<kelvo_subcursor_get_unsigned_bigint>>,
    show_run<show_list<kelvo_subcursor_get_float>>,
    show_run<show_list<kelvo_subcursor_get_double>>,
    show_run<show_varchar>,
    show_run<show_list<kelvo_subcursor_get_unsigned_tinyint>>,  // OPAQUE
};
static_assert(1 << (std::size(run_displays) - 1) == KELVO_OPAQUE);

// Null for a type that is not shown.
RunDisplay display_of(std::int32_t data_type) {
  const auto code = static_cast<std::uint32_t>(data_type);
  if (!std::has_single_bit(code) || code > KELVO_OPAQUE) return nullptr;
  return run_displays[std::countr_zero(code)];
}

}  // namespace

RenderOutcome render_result() {
  if (kelvo_cursor_next(nullptr) != 0) return render_finished;
  std::int32_t data_type = kelvo_cursor_get_data_type(nullptr);
  for (RunEnd end = RunEnd::other_type; end != RunEnd::last_row;) {
    const RunDisplay show = display_of(data_type);
    if (show == nullptr) {
      std::puts("Error when showing result of the operation as the data type is unexpected.");
      return render_unexpected_type;
    }
    end = show(&data_type);
    if (end == RunEnd::interrupted) {
      print_text("<b>(Interrupted by the user)</b>\n");
      return render_interrupted;
    }
  }
  return render_finished;
}
