// The 33 operations of kelvo.h, answered by the scripted engine.
#include "support/scripted_engine.h"

using scripted::engine;

int32_t kelvo_execute(const char* statement) { return engine().execute(__func__, statement); }
const char* kelvo_error_get_message() { return engine().message(__func__); }
int32_t kelvo_error_get_position() { return engine().position(__func__); }

int32_t kelvo_cursor_next(kelvo_cursor* cursor) { return engine().next_row(__func__, cursor); }
int32_t kelvo_cursor_get_data_type(kelvo_cursor* cursor) {
  return engine().data_type(__func__, cursor);
}
const int8_t* kelvo_cursor_get_tinyint(kelvo_cursor* cursor) {
  return engine().value<int8_t>(__func__, cursor);
}
const uint8_t* kelvo_cursor_get_unsigned_tinyint(kelvo_cursor* cursor) {
  return engine().value<uint8_t>(__func__, cursor);
}
const int16_t* kelvo_cursor_get_smallint(kelvo_cursor* cursor) {
  return engine().value<int16_t>(__func__, cursor);
}
const uint16_t* kelvo_cursor_get_unsigned_smallint(kelvo_cursor* cursor) {
  return engine().value<uint16_t>(__func__, cursor);
}
const int32_t* kelvo_cursor_get_int(kelvo_cursor* cursor) {
  return engine().value<int32_t>(__func__, cursor);
}
const uint32_t* kelvo_cursor_get_unsigned_int(kelvo_cursor* cursor) {
  return engine().value<uint32_t>(__func__, cursor);
}
const int64_t* kelvo_cursor_get_bigint(kelvo_cursor* cursor) {
  return engine().value<int64_t>(__func__, cursor);
}
const uint64_t* kelvo_cursor_get_unsigned_bigint(kelvo_cursor* cursor) {
  return engine().value<uint64_t>(__func__, cursor);
}
const float* kelvo_cursor_get_float(kelvo_cursor* cursor) {
  return engine().value<float>(__func__, cursor);
}
const double* kelvo_cursor_get_double(kelvo_cursor* cursor) {
  return engine().value<double>(__func__, cursor);
}
const char* kelvo_cursor_get_char(kelvo_cursor* cursor) { return engine().text(__func__, cursor); }
void kelvo_cursor_clear(kelvo_cursor* cursor) { engine().clear(__func__, cursor); }

int32_t kelvo_subcursor_get_count(kelvo_cursor* cursor) {
  return engine().element_count(__func__, cursor);
}
int32_t kelvo_subcursor_next(kelvo_cursor* cursor) {
  return engine().next_element(__func__, cursor);
}
const int8_t* kelvo_subcursor_get_tinyint(kelvo_cursor* cursor) {
  return engine().element<int8_t>(__func__, cursor);
}
const uint8_t* kelvo_subcursor_get_unsigned_tinyint(kelvo_cursor* cursor) {
  return engine().element<uint8_t>(__func__, cursor);
}
const int16_t* kelvo_subcursor_get_smallint(kelvo_cursor* cursor) {
  return engine().element<int16_t>(__func__, cursor);
}
const uint16_t* kelvo_subcursor_get_unsigned_smallint(kelvo_cursor* cursor) {
  return engine().element<uint16_t>(__func__, cursor);
}
const int32_t* kelvo_subcursor_get_int(kelvo_cursor* cursor) {
  return engine().element<int32_t>(__func__, cursor);
}
const uint32_t* kelvo_subcursor_get_unsigned_int(kelvo_cursor* cursor) {
  return engine().element<uint32_t>(__func__, cursor);
}
const int64_t* kelvo_subcursor_get_bigint(kelvo_cursor* cursor) {
  return engine().element<int64_t>(__func__, cursor);
}
const uint64_t* kelvo_subcursor_get_unsigned_bigint(kelvo_cursor* cursor) {
  return engine().element<uint64_t>(__func__, cursor);
}
const float* kelvo_subcursor_get_float(kelvo_cursor* cursor) {
  return engine().element<float>(__func__, cursor);
}
const double* kelvo_subcursor_get_double(kelvo_cursor* cursor) {
  return engine().element<double>(__func__, cursor);
}

const char* _kelvo_show_use_group() { return engine().group_in_use(__func__); }
int32_t _kelvo_get_last_data_count() { return engine().last_data_count(__func__); }
const char* _kelvo_get_architecture() { return engine().architecture_text(__func__); }
const char* _kelvo_get_compiler() { return engine().compiler_text(__func__); }
