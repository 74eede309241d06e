// The counters.
#include "storage/traffic.h"

namespace kelvo {

Traffic& traffic_read() noexcept {
  static Traffic read;
  return read;
}

Traffic& traffic_written() noexcept {
  static Traffic written;
  return written;
}

}  // namespace kelvo
