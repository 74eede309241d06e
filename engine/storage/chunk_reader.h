// Reads a selection of a compressed dataset chunk by chunk: what is stored is read here, ahead of
// the block that needs it, and decoded in threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include "storage/chunk_layout.h"
#include "storage/decoding_threads.h"
#include "storage/element_conversion.h"
#include "values/chunk_walk.h"

namespace kelvo {

class ChunkReader {
 public:
  /// For the blocks of a BlockWalk over the selection with at most `most` elements each. Null where
  /// the HDF5 library has to read the place. `place` and `selection` must outlive it.
  static std::unique_ptr<ChunkReader> begin(const ElementPlace& place, const Selection& selection,
                                            Extent most);

  ChunkReader(const ElementPlace& place, const Selection& selection, Extent most,
              ChunkLayout layout);
  ChunkReader(const ChunkReader&) = delete;
  ChunkReader& operator=(const ChunkReader&) = delete;
  ~ChunkReader() = default;

  /// Reads the next block, which `block` stands at. False where something is wrong with it: the
  /// HDF5 library then says what, and this is not called again.
  bool read(const BlockWalk& block, std::byte* bytes);

 private:
  // A chunk that is held, for as many parts of blocks as are planned to take elements from it.
  struct HeldChunk : CodedChunk {
    Extent number = 0;
    std::size_t uses = 0;
  };

  [[nodiscard]] Extent chunks_across(std::size_t dimension) const;
  [[nodiscard]] std::size_t most_held(Extent most) const;
  [[nodiscard]] std::size_t helpers() const;
  void enter(const BlockWalk& block, ChunkWalk* walk);
  bool next_planned();
  void plan();
  bool plan_one();
  HeldChunk* free_chunk();
  void load(HeldChunk* chunk);
  void release(HeldChunk* chunk);
  bool convert(std::size_t count, std::byte* bytes);

  const ElementPlace& place_;
  const Selection& selection_;
  ChunkLayout layout_;
  std::vector<Steps> steps_;

  // What is read ahead: the same walk over blocks and their chunks, some chunks further on.
  BlockWalk ahead_;
  ChunkWalk planned_part_;
  bool is_planned_ = true;  // the part that the walk stands at is in uses_, or there is none
  bool is_all_planned_ = false;
  std::size_t most_held_;

  ChunkWalk part_;
  std::vector<std::unique_ptr<HeldChunk>> chunks_;
  std::vector<HeldChunk*> free_;
  std::unordered_map<Extent, HeldChunk*> held_;  // by the chunk's number
  std::deque<HeldChunk*> uses_;                  // by the parts that come next, in their order
  Scratch file_elements_;                        // of a block, until they are converted
  ElementConversion conversion_;
  DecodingThreads threads_;  // last: it ends before what it works on does
};

}  // namespace kelvo
