// How a dataset's chunks are cut and coded, where the engine can decode them by itself.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "storage/chunk_decoder.h"
#include "storage/element_io.h"

namespace kelvo {

struct ChunkLayout {
  std::vector<Extent> extents;  // of a chunk
  ChunkCoding coding;
  /// An element as chunks hold it that were never written; none where reading leaves memory as it
  /// is.
  std::vector<std::byte> fill;
};

/// Whether the HDF5 library may be asked for a chunk by its place. With as many dimensions as there
/// can be, it writes behind its own memory then.
bool has_addressable_chunks(const ElementPlace& place);

/// Nothing where elements have parts elsewhere in the file, chunks are not filtered, or one of the
/// filters is unknown here: the HDF5 library reads these.
std::optional<ChunkLayout> decodable_layout(const ElementPlace& place);

}  // namespace kelvo
