// Reals with the fewest digits that read back to the same value, of which those closest to it: as
// std::to_chars writes them, byte for byte, and several times as fast.
#pragma once

#include <cstddef>

namespace kelvo {

/// Bytes that a caller must have free where the text goes. The longest text takes 24; what is
/// written behind it, within the room, is left undefined.
constexpr std::size_t shortest_room = 40;

// Each returns the byte behind the text.
char* write_shortest(double value, char* text);
char* write_shortest(float value, char* text);

}  // namespace kelvo
