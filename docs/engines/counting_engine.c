/* An engine for the program, as small as one can be: it counts. docs/engines.md is about it.
 *
 *   COUNT 3     a row for each number up to 3
 *   LIST 3      one row that lists them
 *   SAY words   one row of text
 */
#include <kelvo.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

enum { most_numbers = 1000000, too_many = 2 };

/* The result of the last statement, and where in it the program is. */
static struct {
  int32_t type;
  int32_t rows_left;
  int32_t row_elements;
  int32_t elements_left; /* of the current row */
  int32_t number;        /* the current row's, or that of its current element */
  int32_t element_count; /* of all rows */
  char text[1000];
} result;

static struct {
  int32_t position;
  char message[200];
} failure;

/* --- Statements --- */

static const char blanks[] = " \t";

static int32_t fail_expected(const char* statement, const char* expected, const char* found) {
  failure.position = (int32_t)(found - statement) + 1;
  snprintf(failure.message, sizeof failure.message, "Expected %s, found \"%.*s\"", expected,
           (int)strcspn(found, blanks), found);
  return KELVO_ERROR_WITH_POSITION;
}

static int32_t give_numbers(int32_t type, const char* statement, const char* operand) {
  char* end = NULL;
  const long count = strtol(operand, &end, 10);
  if (end == operand || *end != '\0' || count < 0)
    return fail_expected(statement, "a number", operand);
  if (count > most_numbers) {
    snprintf(failure.message, sizeof failure.message, "Cannot count further than %d", most_numbers);
    return too_many;
  }
  result.type = type;
  result.element_count = (int32_t)count;
  result.rows_left = type == KELVO_INT ? result.element_count : 1;
  result.row_elements = result.element_count;
  return KELVO_SUCCESS;
}

static int32_t give_text(const char* text) {
  result.type = KELVO_VARCHAR;
  result.rows_left = result.element_count = 1;
  snprintf(result.text, sizeof result.text, "%s", text);
  return KELVO_SUCCESS;
}

int32_t kelvo_execute(const char* statement) {
  const char* word = statement + strspn(statement, blanks);
  const size_t length = strcspn(word, blanks);
  const char* operand = word + length + strspn(word + length, blanks);
  memset(&result, 0, sizeof result);
  if (length == 5 && strncasecmp(word, "COUNT", length) == 0)
    return give_numbers(KELVO_INT, statement, operand);
  if (length == 4 && strncasecmp(word, "LIST", length) == 0)
    return give_numbers(KELVO_VARINT, statement, operand);
  if (length == 3 && strncasecmp(word, "SAY", length) == 0) return give_text(operand);
  return fail_expected(statement, "COUNT, LIST or SAY", word);
}

const char* kelvo_error_get_message(void) { return failure.message; }
int32_t kelvo_error_get_position(void) { return failure.position; }

/* --- Rows and their elements: there is one cursor, which the program calls NULL --- */

int32_t kelvo_cursor_next(kelvo_cursor* cursor) {
  (void)cursor;
  if (result.rows_left == 0) return 1;
  --result.rows_left;
  if (result.type == KELVO_VARINT)
    result.elements_left = result.row_elements;
  else
    ++result.number;
  return 0;
}

int32_t kelvo_cursor_get_data_type(kelvo_cursor* cursor) {
  (void)cursor;
  return result.type;
}

const int32_t* kelvo_cursor_get_int(kelvo_cursor* cursor) {
  (void)cursor;
  return &result.number;
}

const char* kelvo_cursor_get_char(kelvo_cursor* cursor) {
  (void)cursor;
  return result.text;
}

void kelvo_cursor_clear(kelvo_cursor* cursor) {
  (void)cursor;
  result.rows_left = 0;
}

int32_t kelvo_subcursor_get_count(kelvo_cursor* cursor) {
  (void)cursor;
  return result.row_elements;
}

int32_t kelvo_subcursor_next(kelvo_cursor* cursor) {
  (void)cursor;
  if (result.elements_left == 0) return 1;
  --result.elements_left;
  ++result.number;
  return 0;
}

const int32_t* kelvo_subcursor_get_int(kelvo_cursor* cursor) {
  return kelvo_cursor_get_int(cursor);
}

/* Getters of types that no row of ours has. The program is linked with them, but calls none. */
#define NEVER_CALLED(type, getter)           \
  const type* getter(kelvo_cursor* cursor) { \
    (void)cursor;                            \
    return NULL;                             \
  }
NEVER_CALLED(int8_t, kelvo_cursor_get_tinyint)
NEVER_CALLED(uint8_t, kelvo_cursor_get_unsigned_tinyint)
NEVER_CALLED(int16_t, kelvo_cursor_get_smallint)
NEVER_CALLED(uint16_t, kelvo_cursor_get_unsigned_smallint)
NEVER_CALLED(uint32_t, kelvo_cursor_get_unsigned_int)
NEVER_CALLED(int64_t, kelvo_cursor_get_bigint)
NEVER_CALLED(uint64_t, kelvo_cursor_get_unsigned_bigint)
NEVER_CALLED(float, kelvo_cursor_get_float)
NEVER_CALLED(double, kelvo_cursor_get_double)
NEVER_CALLED(int8_t, kelvo_subcursor_get_tinyint)
NEVER_CALLED(uint8_t, kelvo_subcursor_get_unsigned_tinyint)
NEVER_CALLED(int16_t, kelvo_subcursor_get_smallint)
NEVER_CALLED(uint16_t, kelvo_subcursor_get_unsigned_smallint)
NEVER_CALLED(uint32_t, kelvo_subcursor_get_unsigned_int)
NEVER_CALLED(int64_t, kelvo_subcursor_get_bigint)
NEVER_CALLED(uint64_t, kelvo_subcursor_get_unsigned_bigint)
NEVER_CALLED(float, kelvo_subcursor_get_float)
NEVER_CALLED(double, kelvo_subcursor_get_double)

/* --- Facts about the engine --- */

const char* _kelvo_show_use_group(void) { return NULL; } /* it has no groups */
int32_t _kelvo_get_last_data_count(void) { return result.element_count; }
const char* _kelvo_get_architecture(void) { return sizeof(void*) == 8 ? "64-bit" : "32-bit"; }
const char* _kelvo_get_compiler(void) { return "C " __VERSION__; }
