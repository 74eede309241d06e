// The table of the data types: names and sizes are told here, the constants are those of the
// engine's interface.
#include "help/data_types.h"

#include <cstdio>
#include <iterator>

#include "executor/kelvo.h"
#include "help/markup.h"

namespace {

struct DataType {
  const char* name;
  int constant;
  const char* size;
};

// Each constant is the power of two after the one before, but for 8388608, which names no type.
constexpr DataType data_types[] = {
    {"TINYINT", KELVO_TINYINT, "1 byte"},
    {"UNSIGNED TINYINT", KELVO_UNSIGNED_TINYINT, "1 byte"},
    {"SMALLINT", KELVO_SMALLINT, "2 bytes"},
    {"UNSIGNED SMALLINT", KELVO_UNSIGNED_SMALLINT, "2 bytes"},
    {"INT", KELVO_INT, "4 bytes"},
    {"UNSIGNED INT", KELVO_UNSIGNED_INT, "4 bytes"},
    {"BIGINT", KELVO_BIGINT, "8 bytes"},
    {"UNSIGNED BIGINT", KELVO_UNSIGNED_BIGINT, "8 bytes"},
    {"FLOAT", KELVO_FLOAT, "4 bytes"},
    {"DOUBLE", KELVO_DOUBLE, "8 bytes"},
    {"CHAR", KELVO_CHAR, "1 byte"},
    {"VARTINYINT", KELVO_VARTINYINT, "1 byte (per element)"},
    {"UNSIGNED VARTINYINT", KELVO_UNSIGNED_VARTINYINT, "1 byte (per element)"},
    {"VARSMALLINT", KELVO_VARSMALLINT, "2 bytes (per element)"},
    {"UNSIGNED VARSMALLINT", KELVO_UNSIGNED_VARSMALLINT, "2 bytes (per element)"},
    {"VARINT", KELVO_VARINT, "4 bytes (per element)"},
    {"UNSIGNED VARINT", KELVO_UNSIGNED_VARINT, "4 bytes (per element)"},
    {"VARBIGINT", KELVO_VARBIGINT, "8 bytes (per element)"},
    {"UNSIGNED VARBIGINT", KELVO_UNSIGNED_VARBIGINT, "8 bytes (per element)"},
    {"VARFLOAT", KELVO_VARFLOAT, "4 bytes (per element)"},
    {"VARDOUBLE", KELVO_VARDOUBLE, "8 bytes (per element)"},
    {"VARCHAR", KELVO_VARCHAR, "1 byte (per element)"},
    {"OPAQUE", KELVO_OPAQUE, "1 byte"},
    {"ENUMERATION", KELVO_ENUMERATION, "1, 2, 4 or 8 bytes"},
    {"COMPOUND", KELVO_COMPOUND, "Varies (depends on members)"},
};
static_assert(std::size(data_types) == 25);

constexpr char border[] = "+----------------------+----------+-----------------------------+\n";
constexpr char titles[] =
    "|      <b>Data Type</b>       | <b>Constant</b> |            <b>Size</b>             |\n";

void print_data_type(const DataType& type) {
  char row[sizeof border];
  std::snprintf(row, sizeof row, "| %-21s| %-9d| %-28s|\n", type.name, type.constant, type.size);
  print_text(row);
}

}  // namespace

void show_data_types() {
  print_text(border);
  print_text(titles);
  print_text(border);
  for (const DataType& type : data_types) {
    print_data_type(type);
    print_text(border);
  }
}
