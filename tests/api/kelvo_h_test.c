/* The engine's header as its C users see it: it compiles as C, alone and first, declares the 33
 * operations with the types that an engine's author relies on, and names the codes. */
#include "executor/kelvo.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

#define CHECK(condition)                                      \
  do {                                                        \
    if (!(condition)) {                                       \
      fprintf(stderr, "line %d: %s\n", __LINE__, #condition); \
      ++failures;                                             \
    }                                                         \
  } while (0)

/* One pointer for each operation: an operation of another type would not compile, one that is
 * missing would not link. */
static int32_t (*const execute)(const char*) = kelvo_execute;
static const char* (*const error_get_message)(void) = kelvo_error_get_message;
static int32_t (*const error_get_position)(void) = kelvo_error_get_position;
static void (*const cursor_clear)(kelvo_cursor*) = kelvo_cursor_clear;
static const char* (*const cursor_get_char)(kelvo_cursor*) = kelvo_cursor_get_char;
static int32_t (*const walks[])(kelvo_cursor*) = {kelvo_cursor_next, kelvo_cursor_get_data_type,
                                                  kelvo_subcursor_get_count, kelvo_subcursor_next};
static const int8_t* (*const tinyints[])(kelvo_cursor*) = {kelvo_cursor_get_tinyint,
                                                           kelvo_subcursor_get_tinyint};
static const uint8_t* (*const unsigned_tinyints[])(kelvo_cursor*) = {
    kelvo_cursor_get_unsigned_tinyint, kelvo_subcursor_get_unsigned_tinyint};
static const int16_t* (*const smallints[])(kelvo_cursor*) = {kelvo_cursor_get_smallint,
                                                             kelvo_subcursor_get_smallint};
static const uint16_t* (*const unsigned_smallints[])(kelvo_cursor*) = {
    kelvo_cursor_get_unsigned_smallint, kelvo_subcursor_get_unsigned_smallint};
static const int32_t* (*const ints[])(kelvo_cursor*) = {kelvo_cursor_get_int,
                                                        kelvo_subcursor_get_int};
static const uint32_t* (*const unsigned_ints[])(kelvo_cursor*) = {kelvo_cursor_get_unsigned_int,
                                                                  kelvo_subcursor_get_unsigned_int};
static const int64_t* (*const bigints[])(kelvo_cursor*) = {kelvo_cursor_get_bigint,
                                                           kelvo_subcursor_get_bigint};
static const uint64_t* (*const unsigned_bigints[])(kelvo_cursor*) = {
    kelvo_cursor_get_unsigned_bigint, kelvo_subcursor_get_unsigned_bigint};
static const float* (*const floats[])(kelvo_cursor*) = {kelvo_cursor_get_float,
                                                        kelvo_subcursor_get_float};
static const double* (*const doubles[])(kelvo_cursor*) = {kelvo_cursor_get_double,
                                                          kelvo_subcursor_get_double};
static const char* (*const facts[])(void) = {_kelvo_show_use_group, _kelvo_get_architecture,
                                             _kelvo_get_compiler};
static int32_t (*const get_last_data_count)(void) = _kelvo_get_last_data_count;

static void check_operations(void) {
  CHECK(walks[0] != walks[3]);
  CHECK(tinyints[0] != tinyints[1] && unsigned_tinyints[0] != unsigned_tinyints[1]);
  CHECK(smallints[0] != smallints[1] && unsigned_smallints[0] != unsigned_smallints[1]);
  CHECK(ints[0] != ints[1] && unsigned_ints[0] != unsigned_ints[1]);
  CHECK(bigints[0] != bigints[1] && unsigned_bigints[0] != unsigned_bigints[1]);
  CHECK(floats[0] != floats[1] && doubles[0] != doubles[1]);
  CHECK(error_get_position != get_last_data_count && error_get_message != facts[0]);
  CHECK(cursor_get_char != NULL && facts[1] != facts[2]);
}

static void check_a_statement(void) {
  CHECK(execute("show group") == KELVO_SUCCESS);
  CHECK(kelvo_cursor_next(NULL) != 0);
  CHECK(get_last_data_count() == 0);
  cursor_clear(NULL);
  CHECK(_kelvo_show_use_group() == NULL);
  CHECK(strlen(_kelvo_get_compiler()) > 0);
  CHECK(strlen(_kelvo_get_architecture()) > 0);
}

static void check_codes(void) {
  const int32_t codes[] = {KELVO_TINYINT,
                           KELVO_UNSIGNED_TINYINT,
                           KELVO_SMALLINT,
                           KELVO_UNSIGNED_SMALLINT,
                           KELVO_INT,
                           KELVO_UNSIGNED_INT,
                           KELVO_BIGINT,
                           KELVO_UNSIGNED_BIGINT,
                           KELVO_FLOAT,
                           KELVO_DOUBLE,
                           KELVO_CHAR,
                           KELVO_VARTINYINT,
                           KELVO_UNSIGNED_VARTINYINT,
                           KELVO_VARSMALLINT,
                           KELVO_UNSIGNED_VARSMALLINT,
                           KELVO_VARINT,
                           KELVO_UNSIGNED_VARINT,
                           KELVO_VARBIGINT,
                           KELVO_UNSIGNED_VARBIGINT,
                           KELVO_VARFLOAT,
                           KELVO_VARDOUBLE,
                           KELVO_VARCHAR,
                           KELVO_OPAQUE};
  for (int power = 0; power < 23; ++power) CHECK(codes[power] == 1 << power);
  CHECK(sizeof codes / sizeof codes[0] == 23);
  CHECK(KELVO_ENUMERATION == 16777216);
  CHECK(KELVO_COMPOUND == 33554432);
  CHECK(KELVO_ERROR_WITH_POSITION == -1);
}

int main(void) {
  check_operations();
  check_a_statement();
  check_codes();
  return failures == 0 ? 0 : 1;
}
