// An engine that costs next to nothing, to measure the program by itself: every statement names a
// kind and a number of values ("int32 1000", "int64-lists 1000"), which are served from one block
// in memory.
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "bench/sample_values.h"
#include "executor/kelvo.h"

namespace {

struct Kind {
  std::string_view name;
  std::int32_t code;
  bool list;
  void (*fill)();
};

struct Served {
  std::vector<std::byte> values;
  std::vector<std::string> texts;
  std::size_t value_size = 1;
  const Kind* kind = nullptr;
  std::uint64_t count = 0;        // values in all
  std::uint64_t left = 0;         // of them, not visited yet
  std::size_t elements_left = 0;  // of the current list
  std::size_t next = 0;           // in the block
  const std::byte* value = nullptr;
  const char* text = nullptr;
};

// At a fixed place and made before anything runs, so that nothing has to be asked to reach it.
constinit Served served;

template <typename Number>
void fill_numbers() {
  const std::vector<Number> numbers = bench::sample_numbers<Number>();
  served.value_size = sizeof(Number);
  served.values.resize(numbers.size() * sizeof(Number));
  std::memcpy(served.values.data(), numbers.data(), served.values.size());
}

void fill_texts() { served.texts = bench::sample_texts(); }

constexpr Kind kinds[] = {
    {"int32", KELVO_INT, false, fill_numbers<std::int32_t>},
    {"int64", KELVO_BIGINT, false, fill_numbers<std::int64_t>},
    {"float64", KELVO_DOUBLE, false, fill_numbers<double>},
    {"int32-lists", KELVO_VARINT, true, fill_numbers<std::int32_t>},
    {"int64-lists", KELVO_VARBIGINT, true, fill_numbers<std::int64_t>},
    {"float64-lists", KELVO_VARDOUBLE, true, fill_numbers<double>},
    {"texts", KELVO_VARCHAR, false, fill_texts},
};

const Kind* find_kind(std::string_view name) {
  for (const Kind& kind : kinds)
    if (kind.name == name) return &kind;
  return nullptr;
}

void go_to_next_value() {
  Served& state = served;
  state.value = state.values.data() + state.next * state.value_size;
  state.next = (state.next + 1) % bench::sample_size;
  --state.left;
}

template <typename T>
const T* value() {
  return reinterpret_cast<const T*>(served.value);
}

}  // namespace

extern "C" {

int32_t kelvo_execute(const char* statement) {
  const std::string_view text = statement;
  const std::size_t blank = text.find(' ');
  Served& state = served;
  state = Served();
  state.kind = find_kind(text.substr(0, blank));
  if (state.kind == nullptr || blank == std::string_view::npos) return 1;
  state.kind->fill();
  state.count = state.left = std::strtoull(statement + blank, nullptr, 10);
  return 0;
}

const char* kelvo_error_get_message(void) { return "Expected a kind and a number of values"; }
int32_t kelvo_error_get_position(void) { return 1; }

int32_t kelvo_cursor_next(kelvo_cursor* /*cursor*/) {
  Served& state = served;
  if (state.left == 0) return 1;
  if (state.kind->list) {
    state.elements_left =
        state.left < bench::list_length ? static_cast<std::size_t>(state.left) : bench::list_length;
  } else if (!state.texts.empty()) {
    state.text = state.texts[state.next].c_str();
    state.next = (state.next + 1) % bench::sample_size;
    --state.left;
  } else {
    go_to_next_value();
  }
  return 0;
}

int32_t kelvo_cursor_get_data_type(kelvo_cursor* /*cursor*/) { return served.kind->code; }
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
const char* kelvo_cursor_get_char(kelvo_cursor* /*cursor*/) { return served.text; }
void kelvo_cursor_clear(kelvo_cursor* /*cursor*/) {}

int32_t kelvo_subcursor_get_count(kelvo_cursor* /*cursor*/) {
  return static_cast<int32_t>(served.elements_left);
}

int32_t kelvo_subcursor_next(kelvo_cursor* /*cursor*/) {
  Served& state = served;
  if (state.elements_left == 0) return 1;
  --state.elements_left;
  go_to_next_value();
  return 0;
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

const char* _kelvo_show_use_group(void) { return nullptr; }
int32_t _kelvo_get_last_data_count(void) { return static_cast<int32_t>(served.count); }
const char* _kelvo_get_architecture(void) { return "memory"; }
const char* _kelvo_get_compiler(void) { return "memory"; }

}  // extern "C"
