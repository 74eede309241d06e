// What the machine allows: each job of the benchmarks done directly, by one thread (compressed data
// by two), without a language, an interface or a check in between. Numbers are made by the
// program's own formatting, the fastest known here.
//   limit JOB FILE [COUNT]
#include <hdf5.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <system_error>

#include "bench/own_chunks.h"
#include "bench/sample_values.h"
#include "executor/number_text.h"

namespace {

constexpr hsize_t block_elements = 65536;

// Text on its way out, written whenever 64 KiB are full.
struct Output {
  static constexpr std::size_t size = 65536;
  char bytes[size + 4096];
  char* end = bytes;

  // Call it at least once for every 4 KiB put in.
  void drain(bool all = false) {
    const auto filled = static_cast<std::size_t>(end - bytes);
    if (filled < size && !all) return;
    for (std::size_t done = 0; done < filled;) {
      const ssize_t written = write(STDOUT_FILENO, bytes + done, filled - done);
      if (written <= 0) std::exit(1);
      done += static_cast<std::size_t>(written);
    }
    end = bytes;
  }
  void put(std::string_view text) {
    std::memcpy(end, text.data(), text.size());
    end += text.size();
  }
  template <typename Number>
  void put_line(Number number) {
    end = write_number(end, number);
    *end++ = '\n';
    drain();
  }
};

Output out;

void require(bool holds) {
  if (holds) return;
  std::fputs("The limit program failed\n", stderr);
  std::exit(1);
}

struct Dataset {
  hid_t file;
  hid_t id;
  hid_t space;
  hsize_t length;
};

Dataset open_dataset(const char* path, const char* name) {
  Dataset dataset = {};
  dataset.file = H5Fopen(path, H5F_ACC_RDONLY, H5P_DEFAULT);
  dataset.id = H5Dopen2(dataset.file, name, H5P_DEFAULT);
  dataset.space = H5Dget_space(dataset.id);
  require(dataset.id >= 0);
  dataset.length = static_cast<hsize_t>(H5Sget_simple_extent_npoints(dataset.space));
  return dataset;
}

// Reads a dataset of rank 1 in blocks, passing each to `use`.
template <typename Element, typename Use>
void read_blocks(const Dataset& dataset, hid_t type, Use use) {
  std::vector<Element> block(block_elements);
  for (hsize_t start = 0; start < dataset.length; start += block_elements) {
    const hsize_t count = std::min(block_elements, dataset.length - start);
    const hid_t memory = H5Screate_simple(1, &count, nullptr);
    H5Sselect_hyperslab(dataset.space, H5S_SELECT_SET, &start, nullptr, &count, nullptr);
    require(H5Dread(dataset.id, type, memory, dataset.space, H5P_DEFAULT, block.data()) >= 0);
    use(block.data(), count, memory);
    H5Sclose(memory);
  }
}

template <typename Number>
void print_numbers(const char* path, const char* name, hid_t type) {
  read_blocks<Number>(open_dataset(path, name), type,
                      [](const Number* numbers, hsize_t count, hid_t /*memory*/) {
                        for (hsize_t i = 0; i < count; ++i) out.put_line(numbers[i]);
                      });
}

void print_texts(const char* path) {
  const hid_t type = H5Tcopy(H5T_C_S1);
  H5Tset_size(type, H5T_VARIABLE);
  H5Tset_cset(type, H5T_CSET_UTF8);
  read_blocks<char*>(open_dataset(path, "texts"), type,
                     [type](char** texts, hsize_t count, hid_t memory) {
                       for (hsize_t i = 0; i < count; ++i) {
                         out.put(texts[i]);
                         out.put("\n");
                         out.drain();
                       }
                       H5Dvlen_reclaim(type, memory, H5P_DEFAULT, static_cast<void*>(texts));
                     });
}

struct Row {
  std::int32_t id;
  double x;
  double y;
};

void put_shortest(double value) {
  out.end = std::to_chars(out.end, out.end + number_text_room, value).ptr;
}

void print_rows(const char* path) {
  const hid_t type = H5Tcreate(H5T_COMPOUND, sizeof(Row));
  H5Tinsert(type, "id", HOFFSET(Row, id), H5T_NATIVE_INT32);
  H5Tinsert(type, "x", HOFFSET(Row, x), H5T_NATIVE_DOUBLE);
  H5Tinsert(type, "y", HOFFSET(Row, y), H5T_NATIVE_DOUBLE);
  read_blocks<Row>(open_dataset(path, "rows"), type,
                   [](const Row* rows, hsize_t count, hid_t /*memory*/) {
                     for (hsize_t i = 0; i < count; ++i) {
                       out.put("{id: ");
                       out.end = write_number(out.end, rows[i].id);
                       out.put(", x: ");
                       put_shortest(rows[i].x);
                       out.put(", y: ");
                       put_shortest(rows[i].y);
                       out.put("}\n");
                       out.drain();
                     }
                   });
}

void count_above_one(const char* path, const char* name) {
  std::uint64_t found = 0;
  read_blocks<double>(open_dataset(path, name), H5T_NATIVE_DOUBLE,
                      [&found](const double* values, hsize_t count, hid_t /*memory*/) {
                        for (hsize_t i = 0; i < count; ++i) found += values[i] > 1 ? 1U : 0U;
                      });
  out.put_line(found);
}

// The largest of some values, eight side by side for the machine's vectors.
double largest_of(const double* values, hsize_t count, double largest) {
  std::array<double, 8> lanes;
  lanes.fill(largest);
  const hsize_t whole = count - count % lanes.size();
  for (hsize_t i = 0; i < whole; i += lanes.size()) {
    for (std::size_t lane = 0; lane < lanes.size(); ++lane)
      lanes[lane] = values[i + lane] > lanes[lane] ? values[i + lane] : lanes[lane];
  }
  for (hsize_t i = whole; i < count; ++i) lanes[0] = std::max(lanes[0], values[i]);
  return *std::max_element(lanes.begin(), lanes.end());
}

void count_in_chunks(const char* path) {
  const Dataset dataset = open_dataset(path, "deflate");
  std::array<std::uint64_t, 2> found{};
  const auto count_into = [](std::uint64_t* to) {
    return [to](const double* values, hsize_t count) {
      std::uint64_t more = 0;
      for (hsize_t i = 0; i < count; ++i) more += values[i] > 1 ? 1U : 0U;
      *to += more;
    };
  };
  require(bench::decode_in_two_threads(dataset.id, dataset.length, count_into(&found.front()),
                                       count_into(&found.back())));
  out.put_line(found.front() + found.back());
}

void find_largest_in_chunks(const char* path) {
  const Dataset dataset = open_dataset(path, "deflate");
  constexpr double least = -std::numeric_limits<double>::infinity();
  std::array<double, 2> largest = {least, least};
  const auto keep_in = [](double* best) {
    return
        [best](const double* values, hsize_t count) { *best = largest_of(values, count, *best); };
  };
  require(bench::decode_in_two_threads(dataset.id, dataset.length, keep_in(&largest.front()),
                                       keep_in(&largest.back())));
  out.put_line(std::max(largest.front(), largest.back()));
}

void find_largest(const char* path, const char* name) {
  double largest = -std::numeric_limits<double>::infinity();
  read_blocks<double>(open_dataset(path, name), H5T_NATIVE_DOUBLE,
                      [&largest](const double* values, hsize_t count, hid_t /*memory*/) {
                        largest = largest_of(values, count, largest);
                      });
  out.put_line(largest);
}

herr_t print_object(hid_t /*group*/, const char* name, const H5O_info_t* info, void* /*data*/) {
  if (info->type != H5O_TYPE_DATASET) return 0;
  out.put(name);
  out.put("\n");
  out.drain();
  return 0;
}

void list_objects(const char* path) {
  const hid_t file = H5Fopen(path, H5F_ACC_RDONLY, H5P_DEFAULT);
  require(H5Ovisit2(file, H5_INDEX_NAME, H5_ITER_NATIVE, print_object, nullptr, H5O_INFO_BASIC) >=
          0);
}

// A dataset of rank 1 in a new file, which grows by what is appended.
Dataset make_growing(const char* path, const char* name) {
  Dataset dataset = {};
  dataset.file = H5Fcreate(path, H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT);
  const hsize_t chunk = block_elements;
  const hsize_t most = H5S_UNLIMITED;
  const hid_t creation = H5Pcreate(H5P_DATASET_CREATE);
  H5Pset_chunk(creation, 1, &chunk);
  dataset.space = H5Screate_simple(1, &dataset.length, &most);
  dataset.id = H5Dcreate2(dataset.file, name, H5T_NATIVE_DOUBLE, dataset.space, H5P_DEFAULT,
                          creation, H5P_DEFAULT);
  require(dataset.id >= 0);
  return dataset;
}

void append(Dataset* dataset, const std::vector<double>& values) {
  const hsize_t start = dataset->length;
  const hsize_t count = values.size();
  dataset->length += count;
  H5Dset_extent(dataset->id, &dataset->length);
  const hid_t space = H5Dget_space(dataset->id);
  const hid_t memory = H5Screate_simple(1, &count, nullptr);
  H5Sselect_hyperslab(space, H5S_SELECT_SET, &start, nullptr, &count, nullptr);
  require(H5Dwrite(dataset->id, H5T_NATIVE_DOUBLE, memory, space, H5P_DEFAULT, values.data()) >= 0);
  H5Sclose(memory);
  H5Sclose(space);
}

// Calls `use` for the number on each whole line; returns what is behind the last of them.
template <typename Use>
const char* read_lines(const char* at, const char* end, Use use) {
  while (const auto* line_end =
             static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)))) {
    double value = 0;
    require(std::from_chars(at, line_end, value).ec == std::errc());
    use(value);
    at = line_end + 1;
  }
  return at;
}

// Numbers, one a line, into a new file.
void import_numbers(const char* path) {
  std::FILE* text = std::fopen(path, "re");
  require(text != nullptr);
  Dataset dataset = make_growing("limit.h5", "x");
  std::vector<double> values;
  const auto keep = [&](double value) {
    values.push_back(value);
    if (values.size() < block_elements) return;
    append(&dataset, values);
    values.clear();
  };
  std::vector<char> buffer(1U << 20U);
  std::size_t kept = 0;
  while (const std::size_t got = std::fread(buffer.data() + kept, 1, buffer.size() - kept, text)) {
    const char* end = buffer.data() + kept + got;
    const char* rest = read_lines(buffer.data(), end, keep);
    kept = static_cast<std::size_t>(end - rest);
    std::memmove(buffer.data(), rest, kept);
  }
  if (!values.empty()) append(&dataset, values);
  require(H5Dclose(dataset.id) >= 0 && H5Fclose(dataset.file) >= 0);
  std::fclose(text);
}

template <typename Number>
void print_sample(std::uint64_t count, bool lists) {
  const std::vector<Number> numbers = bench::sample_numbers<Number>();
  for (std::uint64_t i = 1; i <= count; ++i) {
    out.end = write_number(out.end, numbers[(i - 1) % bench::sample_size]);
    *out.end++ = lists && i % bench::list_length != 0 && i != count ? ' ' : '\n';
    out.drain();
  }
}

void print_sample_texts(std::uint64_t count) {
  const std::vector<std::string> texts = bench::sample_texts();
  for (std::uint64_t i = 0; i < count; ++i) {
    out.put(texts[i % bench::sample_size]);
    out.put("\n");
    out.drain();
  }
}

struct Job {
  std::string_view name;
  void (*run)(const char* argument);
};

std::uint64_t count_in(const char* text) { return std::strtoull(text, nullptr, 10); }

// The argument is a file, or the number of values to make.
constexpr Job jobs[] = {
    {"int32",
     [](const char* path) { print_numbers<std::int32_t>(path, "int32", H5T_NATIVE_INT32); }},
    {"float64",
     [](const char* path) { print_numbers<double>(path, "float64", H5T_NATIVE_DOUBLE); }},
    {"texts", print_texts},
    {"rows", print_rows},
    {"deflate", count_in_chunks},
    {"deflate-largest", find_largest_in_chunks},
    {"deflate-library", [](const char* path) { find_largest(path, "deflate"); }},
    {"count", [](const char* path) { count_above_one(path, "float64"); }},
    {"list", list_objects},
    {"csv", import_numbers},
    {"start", [](const char* path) { require(H5Fopen(path, H5F_ACC_RDONLY, H5P_DEFAULT) >= 0); }},
    {"memory-int32", [](const char* n) { print_sample<std::int32_t>(count_in(n), false); }},
    {"memory-int64", [](const char* n) { print_sample<std::int64_t>(count_in(n), false); }},
    {"memory-float64", [](const char* n) { print_sample<double>(count_in(n), false); }},
    {"memory-int32-lists", [](const char* n) { print_sample<std::int32_t>(count_in(n), true); }},
    {"memory-int64-lists", [](const char* n) { print_sample<std::int64_t>(count_in(n), true); }},
    {"memory-float64-lists", [](const char* n) { print_sample<double>(count_in(n), true); }},
    {"memory-texts", [](const char* n) { print_sample_texts(count_in(n)); }},
};

}  // namespace

int main(int count, char** arguments) {
  require(count == 3);
  for (const Job& job : jobs) {
    if (job.name != arguments[1]) continue;
    job.run(arguments[2]);
    out.drain(/*all=*/true);
    return 0;
  }
  require(false);
}
