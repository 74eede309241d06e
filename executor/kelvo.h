/* The calling interface between the program and a query engine: 33 operations and the data types.
 *
 * Who wants to put another engine behind the program builds a shared library that exports these 33
 * functions, undecorated, with the soname libKelvo.so. The program needs no other symbol of it.
 *
 * Rules that hold for all of them:
 *  - Threads: all calls come from the program's one thread, none from a signal handler.
 *  - Cursor: every `cursor` argument is NULL, which names the engine's default cursor. It is filled
 *    by kelvo_execute and stands before its first row until kelvo_cursor_next is called.
 *  - Ownership: every pointer that an operation returns is the engine's. The program never writes
 *    through it and never frees it.
 *  - Lifetime: a returned pointer is read at once and not used after the next call of any
 *    operation; an engine need keep it valid no longer.
 *  - NULL: only kelvo_cursor_get_char and _kelvo_show_use_group may return NULL.
 *  - Errors: only the status of kelvo_execute reports a failure. The `next` operations end a walk
 *    with any non-zero result.
 *  - Types: a getter is called only while the current row (or element) is of its type, so it may
 *    take that for granted.
 *  - Widths: as declared, on 32-bit and 64-bit machines alike; float and double are IEEE 754.
 */
#ifndef KELVO_H
#define KELVO_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Status of a statement. 0: done. -1: failed, with a position to ask for. Any other value: failed,
 * without one. */
enum { KELVO_SUCCESS = 0, KELVO_ERROR_WITH_POSITION = -1 };

/* Data-type code of a row: a power of two each, compared for equality, never used as a mask.
 * 8388608 names no type. */
enum {
  KELVO_TINYINT = 1,
  KELVO_UNSIGNED_TINYINT = 2,
  KELVO_SMALLINT = 4,
  KELVO_UNSIGNED_SMALLINT = 8,
  KELVO_INT = 16,
  KELVO_UNSIGNED_INT = 32,
  KELVO_BIGINT = 64,
  KELVO_UNSIGNED_BIGINT = 128,
  KELVO_FLOAT = 256,
  KELVO_DOUBLE = 512,
  KELVO_CHAR = 1024,
  KELVO_VARTINYINT = 2048,
  KELVO_UNSIGNED_VARTINYINT = 4096,
  KELVO_VARSMALLINT = 8192,
  KELVO_UNSIGNED_VARSMALLINT = 16384,
  KELVO_VARINT = 32768,
  KELVO_UNSIGNED_VARINT = 65536,
  KELVO_VARBIGINT = 131072,
  KELVO_UNSIGNED_VARBIGINT = 262144,
  KELVO_VARFLOAT = 524288,
  KELVO_VARDOUBLE = 1048576,
  KELVO_VARCHAR = 2097152,
  KELVO_OPAQUE = 4194304,
  KELVO_ENUMERATION = 16777216,
  KELVO_COMPOUND = 33554432
};

/* A cursor is a thing of the engine's; the program only ever passes NULL for one. */
/* NOLINTNEXTLINE(modernize-use-using): this is C. */
typedef struct kelvo_cursor kelvo_cursor;

/* --- Statements and their errors --- */

/* Runs one statement. The text is left as it is. On success the default cursor holds the result,
 * which may be empty; a failure leaves a message (and, for -1, a position) to be asked for. */
int32_t kelvo_execute(const char* statement);

/* Message of the last failure: one line without a line end. Asked for only after a non-zero status.
 */
const char* kelvo_error_get_message(void);

/* Position of the last failure within the statement passed. Asked for only after status -1, before
 * the message. */
int32_t kelvo_error_get_position(void);

/* --- The rows of the result --- */

/* Goes to the next row. 0: it is current. Any other value: there is none, also at once for an empty
 * result. */
int32_t kelvo_cursor_next(kelvo_cursor* cursor);

/* Data-type code of the current row; rows of one result may differ. */
int32_t kelvo_cursor_get_data_type(kelvo_cursor* cursor);

/* The value of a row of a scalar type. */
const int8_t* kelvo_cursor_get_tinyint(kelvo_cursor* cursor);
const uint8_t* kelvo_cursor_get_unsigned_tinyint(kelvo_cursor* cursor);
const int16_t* kelvo_cursor_get_smallint(kelvo_cursor* cursor);
const uint16_t* kelvo_cursor_get_unsigned_smallint(kelvo_cursor* cursor);
const int32_t* kelvo_cursor_get_int(kelvo_cursor* cursor);
const uint32_t* kelvo_cursor_get_unsigned_int(kelvo_cursor* cursor);
const int64_t* kelvo_cursor_get_bigint(kelvo_cursor* cursor);
const uint64_t* kelvo_cursor_get_unsigned_bigint(kelvo_cursor* cursor);
const float* kelvo_cursor_get_float(kelvo_cursor* cursor);
const double* kelvo_cursor_get_double(kelvo_cursor* cursor);

/* The value of a VARCHAR row, whole and NUL-terminated, or NULL for a null string. */
const char* kelvo_cursor_get_char(kelvo_cursor* cursor);

/* Empties the default cursor. Called at the end of every run of statements, also after a failed
 * one. */
void kelvo_cursor_clear(kelvo_cursor* cursor);

/* --- The elements of a row: CHAR, VARTINYINT to VARDOUBLE, OPAQUE --- */

/* Number of elements of the current row. Asked for before its first element; never for a CHAR row.
 */
int32_t kelvo_subcursor_get_count(kelvo_cursor* cursor);

/* Goes to the next element of the current row. 0: it is current. Any other value: none is left. */
int32_t kelvo_subcursor_next(kelvo_cursor* cursor);

/* The current element. Characters of CHAR and bytes of OPAQUE are unsigned tinyints. */
const int8_t* kelvo_subcursor_get_tinyint(kelvo_cursor* cursor);
const uint8_t* kelvo_subcursor_get_unsigned_tinyint(kelvo_cursor* cursor);
const int16_t* kelvo_subcursor_get_smallint(kelvo_cursor* cursor);
const uint16_t* kelvo_subcursor_get_unsigned_smallint(kelvo_cursor* cursor);
const int32_t* kelvo_subcursor_get_int(kelvo_cursor* cursor);
const uint32_t* kelvo_subcursor_get_unsigned_int(kelvo_cursor* cursor);
const int64_t* kelvo_subcursor_get_bigint(kelvo_cursor* cursor);
const uint64_t* kelvo_subcursor_get_unsigned_bigint(kelvo_cursor* cursor);
const float* kelvo_subcursor_get_float(kelvo_cursor* cursor);
const double* kelvo_subcursor_get_double(kelvo_cursor* cursor);

/* --- Facts about the engine --- */

/* Path of the group in use, or NULL when none is. */
const char* _kelvo_show_use_group(void);

/* Number of elements that the last statement returned; final only when its rows have been walked.
 */
int32_t _kelvo_get_last_data_count(void);

/* Short texts naming the architecture that the engine was built for, and the compiler that built
 * it. */
const char* _kelvo_get_architecture(void);
const char* _kelvo_get_compiler(void);

#ifdef __cplusplus
}
#endif

#endif
