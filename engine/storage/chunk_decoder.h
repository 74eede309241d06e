// Undoes the filters of chunks as the HDF5 library does, but without it, so that threads of ours
// may: the library must not be called by two at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "values/scratch.h"

struct libdeflate_decompressor;

namespace kelvo {

enum class ChunkFilter { deflate, lzf, shuffle, fletcher32 };

/// Whether the filter changes how many bytes there are by what they are.
constexpr bool compresses(ChunkFilter filter) {
  return filter == ChunkFilter::deflate || filter == ChunkFilter::lzf;
}

/// How the chunks of a dataset are coded.
struct ChunkCoding {
  // As they were applied: each at most once, and only one that compresses.
  std::vector<ChunkFilter> filters;
  std::size_t element_size = 0;  // bytes, in the file
  std::size_t chunk_size = 0;    // bytes of a whole chunk

  /// Bytes that a chunk has between two filters, at most.
  [[nodiscard]] std::size_t room() const noexcept;
};

/// One for each thread.
class ChunkDecoder {
 public:
  /// `coding` must outlive it.
  explicit ChunkDecoder(const ChunkCoding& coding);

  /// Decodes into coding.room() bytes. `mask` has a bit for each filter that was left out. False
  /// where the bytes are not what the filters make of a chunk.
  bool decode(std::span<const std::byte> coded, std::uint32_t mask, std::byte* chunk);

 private:
  struct FreeDecompressor {
    void operator()(libdeflate_decompressor* decompressor) const noexcept;
  };

  [[nodiscard]] std::size_t size_before(std::size_t filter, std::uint32_t mask) const;
  bool undo(ChunkFilter filter, std::span<const std::byte> bytes, std::size_t size, std::byte* to);

  const ChunkCoding& coding_;
  std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor_;
  Scratch between_;  // what one filter hands to the next
};

}  // namespace kelvo
