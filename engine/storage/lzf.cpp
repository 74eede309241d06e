// LZF packs bytes as a row of steps, each begun by a control byte c:
//   c < 32    c + 1 bytes follow that stand for themselves
//   else      a copy of earlier bytes: c >> 5 is its length less 2, where 7 means that the next
//   byte
//             adds to it; the 5 low bits of c and the byte behind it are the distance to it less 1
#include "storage/lzf.h"

#include <algorithm>
#include <cstring>

namespace kelvo {
namespace {

constexpr std::size_t longest_run = 32;
constexpr std::size_t longest_copy = 7 + 255 + 2;
constexpr std::size_t farthest = 1 << 13;
constexpr std::size_t shortest_copy = 3;
constexpr std::size_t shortest_packed_copy = 2;

using Bytes = std::vector<std::uint8_t>;

// Where unpacking stands. All that is behind `at` and `to` is there to be read and written.
struct Unpacking {
  const std::uint8_t* at;
  const std::uint8_t* end;
  std::uint8_t* begin;
  std::uint8_t* to;
  std::uint8_t* to_end;

  [[nodiscard]] std::size_t left() const { return static_cast<std::size_t>(end - at); }
  [[nodiscard]] std::size_t made() const { return static_cast<std::size_t>(to - begin); }
  [[nodiscard]] std::size_t room() const { return static_cast<std::size_t>(to_end - to); }
};

bool unpack_run(std::size_t length, Unpacking* state) {
  if (state->left() < length || state->room() < length) return false;
  std::memcpy(state->to, state->at, length);
  state->at += length;
  state->to += length;
  return true;
}

bool unpack_copy(std::size_t control, Unpacking* state) {
  std::size_t length = control >> 5U;
  if (length == 7) {
    if (state->left() == 0) return false;
    length += *state->at++;
  }
  length += 2;
  if (state->left() == 0) return false;
  const std::size_t distance = ((control & 0x1fU) << 8U) + *state->at++ + 1;
  if (distance > state->made() || state->room() < length) return false;
  const std::uint8_t* from = state->to - distance;
  if (distance >= length) {
    std::memcpy(state->to, from, length);
  } else {
    // Byte by byte: the copy reaches into what it makes.
    for (std::size_t i = 0; i < length; ++i) state->to[i] = from[i];
  }
  state->to += length;
  return true;
}

void pack_run(const std::uint8_t* bytes, std::size_t count, Bytes* out) {
  while (count > 0) {
    const std::size_t length = std::min(count, longest_run);
    out->push_back(static_cast<std::uint8_t>(length - 1));
    out->insert(out->end(), bytes, bytes + length);
    bytes += length;
    count -= length;
  }
}

void pack_copy(std::size_t distance, std::size_t length, Bytes* out) {
  const std::size_t written = length - 2;
  const std::size_t low = distance - 1;
  out->push_back(static_cast<std::uint8_t>(std::min<std::size_t>(written, 7) << 5U | low >> 8U));
  if (written >= 7) out->push_back(static_cast<std::uint8_t>(written - 7));
  out->push_back(static_cast<std::uint8_t>(low));
}

std::size_t hash_of(const std::uint8_t* bytes) {
  const std::uint32_t three =
      bytes[0] | std::uint32_t{bytes[1]} << 8U | std::uint32_t{bytes[2]} << 16U;
  return three * 2654435761U >> 18U;
}

}  // namespace

// Where the same three bytes stood last is where a copy is looked for.
void pack_lzf(const std::uint8_t* bytes, std::size_t size, std::vector<std::uint8_t>* out) {
  std::vector<std::size_t> last(std::size_t{1} << 14U, size);
  std::size_t run = 0;  // where the bytes begin that stand for themselves
  std::size_t at = 0;
  while (at + shortest_copy <= size) {
    std::size_t& seen = last[hash_of(bytes + at)];
    const std::size_t from = seen;
    seen = at;
    std::size_t length = 0;
    if (from < at && at - from <= farthest) {
      const std::size_t most = std::min(longest_copy, size - at);
      while (length < most && bytes[from + length] == bytes[at + length]) ++length;
    }
    if (length < shortest_copy) {
      ++at;
      continue;
    }
    pack_run(bytes + run, at - run, out);
    pack_copy(at - from, length, out);
    at += length;
    run = at;
  }
  pack_run(bytes + run, size - run, out);
}

std::size_t most_unpacked_lzf(std::size_t size) {
  return size / shortest_packed_copy * longest_copy + longest_copy;
}

std::optional<std::size_t> unpack_lzf(std::span<const std::uint8_t> packed,
                                      std::span<std::uint8_t> to) {
  Unpacking state{packed.data(), packed.data() + packed.size(), to.data(), to.data(),
                  to.data() + to.size()};
  while (state.at != state.end) {
    const std::size_t control = *state.at++;
    const bool is_run = control < longest_run;
    if (!(is_run ? unpack_run(control + 1, &state) : unpack_copy(control, &state)))
      return std::nullopt;
  }
  return state.made();
}

}  // namespace kelvo
