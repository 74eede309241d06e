// Loads some chunks, then two threads share them, and so on.
#include "bench/own_chunks.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <barrier>
#include <thread>
#include <vector>

namespace bench {
namespace {

constexpr std::size_t round_size = 32;  // chunks that are shared at a time

struct Stored {
  std::vector<unsigned char> bytes;
  hsize_t count = 0;  // elements
};

struct Round {
  std::array<Stored, round_size> chunks;
  std::size_t filled = 0;
  std::atomic<std::size_t> next = 0;
  std::atomic<bool> is_sound = true;
  hsize_t chunk = 0;  // elements of a whole one
};

void unshuffle(const unsigned char* from, std::size_t count, unsigned char* __restrict to) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < sizeof(double); ++j)
      to[i * sizeof(double) + j] = from[j * count + i];
  }
}

// What is kept between rounds.
struct Decoder {
  explicit Decoder(const Round& round)
      : decompressor(libdeflate_alloc_decompressor()),
        shuffled(round.chunk * sizeof(double)),
        values(round.chunk) {}
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() { libdeflate_free_decompressor(decompressor); }

  libdeflate_decompressor* decompressor;
  std::vector<unsigned char> shuffled;
  std::vector<double> values;
};

void take_part(Round& round, Decoder& decoder, const UseChunk& use) {
  for (std::size_t i = 0; (i = round.next++) < round.filled;) {
    const Stored& stored = round.chunks[i];
    const auto result =
        libdeflate_zlib_decompress(decoder.decompressor, stored.bytes.data(), stored.bytes.size(),
                                   decoder.shuffled.data(), decoder.shuffled.size(), nullptr);
    if (result != LIBDEFLATE_SUCCESS) round.is_sound = false;
    unshuffle(decoder.shuffled.data(), round.chunk,
              reinterpret_cast<unsigned char*>(decoder.values.data()));
    use(decoder.values.data(), stored.count);
  }
}

bool load(hid_t dataset, hsize_t start, Stored* stored) {
  hsize_t size = 0;
  unsigned mask = 0;
  if (H5Dget_chunk_storage_size(dataset, &start, &size) < 0) return false;
  stored->bytes.resize(size);
  return H5Dread_chunk(dataset, H5P_DEFAULT, &start, &mask, stored->bytes.data()) >= 0 && mask == 0;
}

bool fill(hid_t dataset, hsize_t length, hsize_t* start, Round* round) {
  round->filled = 0;
  while (round->filled < round_size && *start < length) {
    Stored& stored = round->chunks[round->filled++];
    if (!load(dataset, *start, &stored)) return false;
    stored.count = std::min(round->chunk, length - *start);
    *start += round->chunk;
  }
  round->next = 0;
  return true;
}

}  // namespace

bool decode_in_two_threads(hid_t dataset, hsize_t length, const UseChunk& first,
                           const UseChunk& second) {
  Round round;
  const hid_t creation = H5Dget_create_plist(dataset);
  if (H5Pget_chunk(creation, 1, &round.chunk) != 1) return false;
  H5Pclose(creation);
  std::barrier<> turn(2);
  std::jthread helper([&round, &turn, &second] {
    Decoder decoder(round);
    for (;;) {
      turn.arrive_and_wait();
      if (round.filled == 0) return;
      take_part(round, decoder, second);
      turn.arrive_and_wait();
    }
  });
  Decoder decoder(round);
  hsize_t start = 0;
  do {
    if (!fill(dataset, length, &start, &round)) round.is_sound = false;
    if (!round.is_sound) round.filled = 0;
    turn.arrive_and_wait();
    if (round.filled == 0) break;
    take_part(round, decoder, first);
    turn.arrive_and_wait();
  } while (true);
  return round.is_sound;
}

}  // namespace bench
