// Threads that decode chunks ahead of the one that uses them. They never call the HDF5 library,
// whose calls stay on the thread of the engine.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "storage/chunk_decoder.h"

namespace kelvo {

enum class ChunkState { waiting, running, decoded, failed };

/// A chunk on its way. Between begin() and finish() it belongs to the threads.
struct CodedChunk {
  Scratch coded;
  std::size_t coded_size = 0;
  std::uint32_t mask = 0;  // a bit for each filter that was left out
  Scratch chunk;           // room for ChunkCoding::room() bytes
  ChunkState state = ChunkState::waiting;
};

class DecodingThreads {
 public:
  /// `helpers`: threads besides the caller's, or fewer where the system refuses. `coding` and all
  /// chunks that are begun must outlive them.
  DecodingThreads(const ChunkCoding& coding, std::size_t helpers);
  DecodingThreads(const DecodingThreads&) = delete;
  DecodingThreads& operator=(const DecodingThreads&) = delete;
  ~DecodingThreads() = default;

  /// Has the chunk decoded some time.
  void begin(CodedChunk* chunk);

  /// Waits until it is decoded; the caller's thread decodes meanwhile what nobody has begun yet.
  void finish(CodedChunk* chunk);

 private:
  void help(const std::stop_token& stop, ChunkDecoder& decoder);
  void decode_first(std::unique_lock<std::mutex>& lock, ChunkDecoder& decoder);

  std::mutex mutex_;                  // guards the queue, and the states of the chunks in it
  std::condition_variable_any work_;  // there is something in the queue
  std::condition_variable done_;      // a chunk has been decoded
  std::deque<CodedChunk*> queue_;
  ChunkDecoder own_decoder_;
  std::vector<ChunkDecoder> decoders_;
  std::vector<std::jthread> helpers_;  // last: they end before what they use does
};

}  // namespace kelvo
