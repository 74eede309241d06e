// How a new dataset is stored, as the options of CREATE DATASET and COPY DATASET say it.
#pragma once

#include <optional>
#include <vector>

#include "values/literal.h"
#include "values/space.h"

namespace kelvo {

enum class Layout { contiguous, compact, chunked };
enum class Allocation { early, late, incremental };

/// Numbers of the filters that have words of their own, fixed by the file format.
enum FilterId : unsigned {
  deflate_id = 1,
  shuffle_id = 2,
  fletcher32_id = 3,
  szip_id = 4,
  nbit_id = 5,
  scaleoffset_id = 6,
};

/// One filter of the pipeline. As written, DEFLATE and SCALEOFFSET have one value, FILTER any
/// number and the others none; in a file some have more.
struct Filter {
  unsigned id = 0;  // the number that the HDF5 library registers it under
  std::vector<unsigned> values;
  bool required = false;  // a chunk that it cannot take is an error, not stored without it
};

struct StorageOptions {
  std::optional<Layout> layout;
  std::vector<Extent> chunk;    // none where the engine chooses
  std::vector<Filter> filters;  // in the order that data pass them when they are written
  std::optional<Literal> fill;
  std::optional<Allocation> allocation;
  bool track_order = false;  // of attributes
};

}  // namespace kelvo
