// How objects are stored, in the HDF5 library's own words.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "storage/element_io.h"

namespace kelvo {

struct StorageDescription {
  std::string_view type;        // CONTIGUOUS, COMPACT, CHUNKED, VIRTUAL
  std::string_view allocation;  // EARLY, LATE, INCREMENTAL
  std::string_view fill_type;   // DEFAULT, UNDEFINED, USER
  std::vector<Extent> chunk;    // extents of a chunk; none unless CHUNKED
};

StorageDescription describe_storage(const ElementPlace& place);

/// Whether the creation order of a group's members, or of another object's attributes, is kept:
/// TRACKED, INDEXED (tracked, and found through an index of its own), NONE. `name` as messages show
/// the object.
std::string_view creation_order(hid_t object, const std::string& name);

/// For each chunk that is stored, in C order of their places, a bit for each filter of the pipeline
/// that was left out when it was written. None unless the dataset is chunked.
std::vector<std::uint32_t> chunk_masks(const ElementPlace& place);

/// Bytes that the elements take in the file, filters applied.
std::uint64_t stored_bytes(const ElementPlace& place);

/// Bytes of the file, as the HDF5 library counts them.
std::uint64_t file_bytes(hid_t file);

/// The fill value as the only element of a dataset of its own, which is in `memory` instead of any
/// file.
struct FillValue {
  FileHandle memory;
  ElementPlace place;
};

/// Nothing where the fill value is UNDEFINED.
std::optional<FillValue> fill_value(const ElementPlace& place);

}  // namespace kelvo
