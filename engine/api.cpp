// The 33 operations: each unwraps, makes one call and returns. The only place where the engine's
// exceptions stop.
#include <climits>
#include <exception>

#include "build_info.h"
#include "kelvo.h"
#include "session.h"

namespace {

using kelvo::Cursor;
using kelvo::Result;
using kelvo::Session;
using kelvo::StatementError;
using kelvo::Status;

// The default cursor lies at a fixed place, and is there before the session is: the operations that
// are called for each value reach it without asking anything.
constinit Cursor cursor;

// Made at the first call, and given back when the process ends: files are closed then.
Session& session() {
  static Session the_session(cursor);
  return the_session;
}

// Where the cursor has come to the end of what it can step over by itself.
int32_t go_on(bool (Result::*go)()) {
  Result& result = session().result();
  const bool found = (result.*go)();
  if (result.failure()) session().fail(*result.failure());
  return found ? 0 : 1;
}

template <typename T>
const T* value() noexcept {
  return reinterpret_cast<const T*>(cursor.value);
}

int32_t clamp_to_int(std::uint64_t count) noexcept {
  return count > INT_MAX ? INT_MAX : static_cast<int32_t>(count);
}

}  // namespace

extern "C" {

int32_t kelvo_execute(const char* statement) {
  try {
    return static_cast<int32_t>(session().execute(statement));
  } catch (const std::exception& error) {
    // Not even the failure could be recorded in the ordinary way: next to always for want of
    // memory.
    session().fail(StatementError(Status::no_memory, error.what()));
  } catch (...) {
    session().fail(StatementError(Status::no_memory, "The engine failed for an unknown reason"));
  }
  return static_cast<int32_t>(Status::no_memory);
}

const char* kelvo_error_get_message(void) { return session().message().c_str(); }
int32_t kelvo_error_get_position(void) { return session().position(); }

int32_t kelvo_cursor_next(kelvo_cursor* /*cursor*/) {
  return cursor.step_to_row() ? 0 : go_on(&Result::next_row);
}

int32_t kelvo_cursor_get_data_type(kelvo_cursor* /*cursor*/) { return cursor.code; }

const int8_t* kelvo_cursor_get_tinyint(kelvo_cursor* /*cursor*/) { return value<int8_t>(); }
const uint8_t* kelvo_cursor_get_unsigned_tinyint(kelvo_cursor* /*cursor*/) {
  return value<uint8_t>();
}
const int16_t* kelvo_cursor_get_smallint(kelvo_cursor* /*cursor*/) { return value<int16_t>(); }
const uint16_t* kelvo_cursor_get_unsigned_smallint(kelvo_cursor* /*cursor*/) {
  return value<uint16_t>();
}
const int32_t* kelvo_cursor_get_int(kelvo_cursor* /*cursor*/) { return value<int32_t>(); }
const uint32_t* kelvo_cursor_get_unsigned_int(kelvo_cursor* /*cursor*/) {
  return value<uint32_t>();
}
const int64_t* kelvo_cursor_get_bigint(kelvo_cursor* /*cursor*/) { return value<int64_t>(); }
const uint64_t* kelvo_cursor_get_unsigned_bigint(kelvo_cursor* /*cursor*/) {
  return value<uint64_t>();
}
const float* kelvo_cursor_get_float(kelvo_cursor* /*cursor*/) { return value<float>(); }
const double* kelvo_cursor_get_double(kelvo_cursor* /*cursor*/) { return value<double>(); }
const char* kelvo_cursor_get_char(kelvo_cursor* /*cursor*/) { return value<char>(); }

void kelvo_cursor_clear(kelvo_cursor* /*cursor*/) { session().result().clear(); }

int32_t kelvo_subcursor_get_count(kelvo_cursor* /*cursor*/) {
  return clamp_to_int(cursor.element_count);
}

int32_t kelvo_subcursor_next(kelvo_cursor* /*cursor*/) {
  return cursor.step_to_element() ? 0 : go_on(&Result::next_element);
}

const int8_t* kelvo_subcursor_get_tinyint(kelvo_cursor* /*cursor*/) { return value<int8_t>(); }
const uint8_t* kelvo_subcursor_get_unsigned_tinyint(kelvo_cursor* /*cursor*/) {
  return value<uint8_t>();
}
const int16_t* kelvo_subcursor_get_smallint(kelvo_cursor* /*cursor*/) { return value<int16_t>(); }
const uint16_t* kelvo_subcursor_get_unsigned_smallint(kelvo_cursor* /*cursor*/) {
  return value<uint16_t>();
}
const int32_t* kelvo_subcursor_get_int(kelvo_cursor* /*cursor*/) { return value<int32_t>(); }
const uint32_t* kelvo_subcursor_get_unsigned_int(kelvo_cursor* /*cursor*/) {
  return value<uint32_t>();
}
const int64_t* kelvo_subcursor_get_bigint(kelvo_cursor* /*cursor*/) { return value<int64_t>(); }
const uint64_t* kelvo_subcursor_get_unsigned_bigint(kelvo_cursor* /*cursor*/) {
  return value<uint64_t>();
}
const float* kelvo_subcursor_get_float(kelvo_cursor* /*cursor*/) { return value<float>(); }
const double* kelvo_subcursor_get_double(kelvo_cursor* /*cursor*/) { return value<double>(); }

const char* _kelvo_show_use_group(void) {
  const std::string* group = session().used_group();
  return group == nullptr ? nullptr : group->c_str();
}

int32_t _kelvo_get_last_data_count(void) { return clamp_to_int(session().result().elements()); }
const char* _kelvo_get_architecture(void) { return kelvo::architecture(); }
const char* _kelvo_get_compiler(void) { return kelvo::compiler(); }

}  // extern "C"
