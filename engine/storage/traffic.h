// How many elements went between files and memory; for debug output.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo {

struct Traffic {
  std::uint64_t elements = 0;
  std::uint64_t bytes = 0;  // in memory

  void add(std::uint64_t count, std::size_t size) noexcept {
    elements += count;
    bytes += count * size;
  }
};

/// What was read and written since the program began, or since somebody set it to nothing.
Traffic& traffic_read() noexcept;
Traffic& traffic_written() noexcept;

}  // namespace kelvo
