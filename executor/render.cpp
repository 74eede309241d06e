// Values are shown as they are walked: nothing is read ahead and no row is kept, so a large result
// streams, and Ctrl-C stops it between two values.
#include "executor/render.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "executor/interrupt.h"
#include "executor/kelvo.h"
#include "executor/row_output.h"
#include "help/markup.h"

namespace {

// A getter of the engine's, for the value of a row or for an element.
template <typename Value>
using Getter = const Value* (*)(kelvo_cursor*);

bool interrupted() { return interrupt_status == 1; }

// What a value is shown as: integers of 8 and 16 bits as numbers too, floats widened to double.
template <typename Value>
using Shown = std::conditional_t<
    std::is_floating_point_v<Value>, double,
    std::conditional_t<sizeof(Value) == 8, Value,
                       std::conditional_t<std::is_signed_v<Value>, std::int32_t, std::uint32_t>>>;

template <typename Value>
void show_value(Getter<Value> get) {
  add_number(static_cast<Shown<Value>>(*get(nullptr)));
}

template <typename Value>
void show_scalar(Getter<Value> get) {
  show_value(get);
  add_byte('\n');
}

// Which element is the last is told by counting down alone, so a count that does not agree with the
// elements shows in the output. Unsigned, for a count of any sign to count down and wrap around
// without harm.
template <typename Value>
void show_list(Getter<Value> get) {
  auto remaining = static_cast<std::uint32_t>(kelvo_subcursor_get_count(nullptr));
  while (kelvo_subcursor_next(nullptr) == 0) {
    if (remaining == 1) {
      // The flag is not looked at here: the row loop does so after the line's end.
      show_value(get);
      continue;
    }
    show_value(get);
    add_byte(' ');
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
  if (text != nullptr) add_text(text, std::strlen(text));
  add_byte('\n');
}

// Shows the current row. False when its type is not one that is shown, and nothing was printed.
bool show_row(std::int32_t data_type) {
  // One line a type, in the order of the codes.
  // clang-format off
  switch (data_type) {
    case KELVO_TINYINT: show_scalar(kelvo_cursor_get_tinyint); return true;
    case KELVO_UNSIGNED_TINYINT: show_scalar(kelvo_cursor_get_unsigned_tinyint); return true;
    case KELVO_SMALLINT: show_scalar(kelvo_cursor_get_smallint); return true;
    case KELVO_UNSIGNED_SMALLINT: show_scalar(kelvo_cursor_get_unsigned_smallint); return true;
    case KELVO_INT: show_scalar(kelvo_cursor_get_int); return true;
    case KELVO_UNSIGNED_INT: show_scalar(kelvo_cursor_get_unsigned_int); return true;
    case KELVO_BIGINT: show_scalar(kelvo_cursor_get_bigint); return true;
    case KELVO_UNSIGNED_BIGINT: show_scalar(kelvo_cursor_get_unsigned_bigint); return true;
    case KELVO_FLOAT: show_scalar(kelvo_cursor_get_float); return true;
    case KELVO_DOUBLE: show_scalar(kelvo_cursor_get_double); return true;
    case KELVO_CHAR: show_char(); return true;
    case KELVO_VARTINYINT: show_list(kelvo_subcursor_get_tinyint); return true;
    case KELVO_UNSIGNED_VARTINYINT: show_list(kelvo_subcursor_get_unsigned_tinyint); return true;
    case KELVO_VARSMALLINT: show_list(kelvo_subcursor_get_smallint); return true;
    case KELVO_UNSIGNED_VARSMALLINT: show_list(kelvo_subcursor_get_unsigned_smallint); return true;
    case KELVO_VARINT: show_list(kelvo_subcursor_get_int); return true;
    case KELVO_UNSIGNED_VARINT: show_list(kelvo_subcursor_get_unsigned_int); return true;
    case KELVO_VARBIGINT: show_list(kelvo_subcursor_get_bigint); return true;
    case KELVO_UNSIGNED_VARBIGINT: show_list(kelvo_subcursor_get_unsigned_bigint); return true;
    case KELVO_VARFLOAT: show_list(kelvo_subcursor_get_float); return true;
    case KELVO_VARDOUBLE: show_list(kelvo_subcursor_get_double); return true;
    case KELVO_VARCHAR: show_varchar(); return true;
    case KELVO_OPAQUE: show_list(kelvo_subcursor_get_unsigned_tinyint); return true;
    default: return false;
  }
  // clang-format on
}

}  // namespace

RenderOutcome render_result() {
  while (kelvo_cursor_next(nullptr) == 0) {
    if (!show_row(kelvo_cursor_get_data_type(nullptr))) {
      std::puts("Error when showing result of the operation as the data type is unexpected.");
      return render_unexpected_type;
    }
    if (interrupted()) {
      print_text("<b>(Interrupted by the user)</b>\n");
      return render_interrupted;
    }
  }
  return render_finished;
}
