// Planning ahead, loading, and taking out what blocks need.
#include "storage/chunk_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelvo {
namespace {

// What is held of decoded chunks, where more than one do.
constexpr std::size_t most_bytes = std::size_t{32} * 1024 * 1024;

// Work that is worth a thread: starting one takes as long as decoding a few KiB.
constexpr std::size_t bytes_for_helper = std::size_t{256} * 1024;

// Filters add little where they cannot compress; what is larger is damaged.
std::size_t most_coded_bytes(const ChunkCoding& coding) { return 2 * coding.chunk_size + 4096; }

void fill_chunk(const std::vector<std::byte>& element, std::size_t size, std::byte* chunk) {
  const bool is_zero = std::all_of(element.begin(), element.end(),
                                   [](std::byte byte) { return byte == std::byte{0}; });
  if (is_zero) {
    std::memset(chunk, 0, size);
    return;
  }
  for (std::size_t at = 0; at < size; at += element.size())
    std::memcpy(chunk + at, element.data(), element.size());
}

}  // namespace

std::unique_ptr<ChunkReader> ChunkReader::begin(const ElementPlace& place,
                                                const Selection& selection, Extent most) {
  if (place.threads < 1) return nullptr;
  std::optional<ChunkLayout> layout = decodable_layout(place);
  if (!layout) return nullptr;
  return std::make_unique<ChunkReader>(place, selection, most, std::move(*layout));
}

ChunkReader::ChunkReader(const ElementPlace& place, const Selection& selection, Extent most,
                         ChunkLayout layout)
    : place_(place),
      selection_(selection),
      layout_(std::move(layout)),
      steps_(layout_.extents.size()),
      ahead_(selection, most),
      planned_part_(layout_.extents),
      most_held_(most_held(most)),
      part_(layout_.extents),
      conversion_(place.file_type.get(), place.memory_type.get()),
      threads_(layout_.coding, helpers()) {}

// How many chunks the selection goes through in a dimension.
Extent ChunkReader::chunks_across(std::size_t dimension) const {
  const Extent count = selection_.count[dimension];
  if (count == 0) return 0;
  const Extent first = selection_.start[dimension];
  const Extent last = first + (count - 1) * selection_.stride[dimension];
  const Extent chunk = layout_.extents[dimension];
  return std::min(count, last / chunk - first / chunk + 1);
}

// The chunks of a block and those that are decoded meanwhile; and as a chunk that several blocks
// share is to be decoded once, also all that stand side by side across the faster dimensions.
std::size_t ChunkReader::most_held(Extent most) const {
  const auto chunk = static_cast<double>(layout_.coding.chunk_size);
  double wanted =
      2.0 * place_.threads + static_cast<double>(most * layout_.coding.element_size) / chunk;
  double across = 1;
  for (std::size_t d = 1; d < layout_.extents.size(); ++d)
    across *= static_cast<double>(chunks_across(d));
  const double affordable = std::max(1.0, static_cast<double>(most_bytes) / chunk);
  wanted = across + wanted <= affordable ? across + wanted : std::min(wanted, affordable);
  return static_cast<std::size_t>(wanted);
}

std::size_t ChunkReader::helpers() const {
  double chunks = 1;
  for (std::size_t d = 0; d < layout_.extents.size(); ++d)
    chunks *= static_cast<double>(chunks_across(d));
  const double worth = chunks * static_cast<double>(layout_.coding.chunk_size) / bytes_for_helper;
  const double most = std::min({worth, chunks - 1, static_cast<double>(most_held_) - 1,
                                static_cast<double>(place_.threads) - 1});
  return static_cast<std::size_t>(std::max(0.0, most));
}

bool ChunkReader::read(const BlockWalk& block, std::byte* bytes) {
  std::byte* to = bytes;
  const auto elements = static_cast<std::size_t>(block.elements());
  const std::size_t size = layout_.coding.element_size;
  if (conversion_.is_needed()) {
    file_elements_.reserve(elements * conversion_.room());
    to = file_elements_.data();
  }
  enter(block, &part_);
  while (part_.next()) {
    plan();
    HeldChunk* chunk = uses_.front();
    uses_.pop_front();
    threads_.finish(chunk);
    if (chunk->state != ChunkState::decoded) return false;
    part_.copy(chunk->chunk.data(), size, to);
    if (--chunk->uses == 0) release(chunk);
  }
  return !conversion_.is_needed() || convert(elements, bytes);
}

void ChunkReader::enter(const BlockWalk& block, ChunkWalk* walk) {
  for (std::size_t d = 0; d < steps_.size(); ++d)
    steps_[d] = {block.start()[d], selection_.stride[d], block.count()[d]};
  walk->begin(steps_);
}

// Goes on to the part that is to be planned next.
bool ChunkReader::next_planned() {
  if (!is_planned_) return true;
  // At the very beginning the walk over parts is at its end.
  while (!planned_part_.next()) {
    if (is_all_planned_ || !ahead_.next()) {
      is_all_planned_ = true;
      return false;
    }
    enter(ahead_, &planned_part_);
  }
  is_planned_ = false;
  return true;
}

void ChunkReader::plan() {
  // Twice the chunks held are as many parts as are needed to know which of them come again.
  while (uses_.size() < 2 * most_held_ && plan_one()) {
  }
}

bool ChunkReader::plan_one() {
  if (!next_planned()) return false;
  Extent number = 0;
  for (std::size_t d = 0; d < layout_.extents.size(); ++d) {
    const Extent across = place_.space.extents[d] / layout_.extents[d] + 1;
    number = number * across + planned_part_.origin()[d] / layout_.extents[d];
  }
  const auto found = held_.find(number);
  HeldChunk* chunk = found == held_.end() ? free_chunk() : found->second;
  if (chunk == nullptr) return false;
  if (chunk->uses++ == 0) {
    chunk->number = number;
    held_.emplace(number, chunk);
    load(chunk);
  }
  uses_.push_back(chunk);
  is_planned_ = true;
  return true;
}

ChunkReader::HeldChunk* ChunkReader::free_chunk() {
  if (free_.empty() && chunks_.size() < most_held_) {
    chunks_.push_back(std::make_unique<HeldChunk>());
    free_.push_back(chunks_.back().get());
  }
  if (free_.empty()) return nullptr;
  HeldChunk* chunk = free_.back();
  free_.pop_back();
  return chunk;
}

void ChunkReader::release(HeldChunk* chunk) {
  held_.erase(chunk->number);
  free_.push_back(chunk);
}

// Reads the chunk that the plan stands at, as it is stored.
void ChunkReader::load(HeldChunk* chunk) {
  const hid_t dataset = place_.dataset.get();
  const hsize_t* origin = planned_part_.origin().data();
  chunk->state = ChunkState::failed;
  hsize_t size = 0;
  if (H5Dget_chunk_storage_size(dataset, origin, &size) < 0) return;
  if (size > most_coded_bytes(layout_.coding)) return;
  chunk->chunk.reserve(layout_.coding.room());
  if (size == 0) {
    if (layout_.fill.empty()) return;
    fill_chunk(layout_.fill, layout_.coding.chunk_size, chunk->chunk.data());
    chunk->state = ChunkState::decoded;
    return;
  }
  chunk->coded.reserve(static_cast<std::size_t>(size));
  chunk->coded_size = static_cast<std::size_t>(size);
  if (H5Dread_chunk(dataset, H5P_DEFAULT, origin, &chunk->mask, chunk->coded.data()) < 0) return;
  threads_.begin(chunk);
}

// From file_elements_, where they are converted in place.
bool ChunkReader::convert(std::size_t count, std::byte* bytes) {
  if (!conversion_.run(file_elements_.data(), count)) return false;
  std::memcpy(bytes, file_elements_.data(), count * conversion_.size_after());
  return true;
}

}  // namespace kelvo
