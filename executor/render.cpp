// Values are printed as they are walked: one print for a value or an element, nothing collected,
// nothing read ahead. So a large result streams, and Ctrl-C stops it between two values.
#include "executor/render.h"

#include <cinttypes>
#include <cstdio>

#include "executor/interrupt.h"
#include "executor/kelvo.h"
#include "help/markup.h"

namespace {

// A getter of the engine's, for the value of a row or for an element.
template <typename Value>
using Getter = const Value* (*)(kelvo_cursor*);

bool interrupted() { return interrupt_status == 1; }

// The integers of 8 and 16 bits are promoted to int, which shows them as numbers; float is widened
// to double.
void print_value(std::int32_t value, const char* after) {
  std::printf("%" PRId32 "%s", value, after);
}
void print_value(std::uint32_t value, const char* after) {
  std::printf("%" PRIu32 "%s", value, after);
}
void print_value(std::int64_t value, const char* after) {
  std::printf("%" PRId64 "%s", value, after);
}
void print_value(std::uint64_t value, const char* after) {
  std::printf("%" PRIu64 "%s", value, after);
}
void print_value(double value, const char* after) { std::printf("%f%s", value, after); }

template <typename Value>
void show_scalar(Getter<Value> get) {
  print_value(*get(nullptr), "\n");
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
      print_value(*get(nullptr), "");
      continue;
    }
    print_value(*get(nullptr), " ");
    if (interrupted()) break;
    --remaining;
  }
  std::putchar('\n');
}

// The count of elements is not asked: the characters need no separator, so none has to be known as
// the last.
void show_char() {
  while (kelvo_subcursor_next(nullptr) == 0) {
    std::putchar(*kelvo_subcursor_get_unsigned_tinyint(nullptr));
    if (interrupted()) break;
  }
  std::putchar('\n');
}

void show_varchar() {
  const char* text = kelvo_cursor_get_char(nullptr);
  std::puts(text != nullptr ? text : "");
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
