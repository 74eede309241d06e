// Built on ftime, whose record has just the resolution that is shown.
#include "executor/timer.h"

struct timeb time_start;
struct timeb time_stop;

namespace {

void read_clock(struct timeb* now) {
// glibc marks ftime as deprecated in favour of clocks of a finer resolution, of which nothing here
// has a use.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  ftime(now);
#pragma GCC diagnostic pop
}

}  // namespace

void timer_start() { read_clock(&time_start); }

void timer_stop() { read_clock(&time_stop); }

std::int32_t timer_elapsed() {
  // Unsigned, since only there wrapping around is defined; the bits are those of the signed result.
  const std::uint32_t seconds =
      static_cast<std::uint32_t>(time_stop.time) - static_cast<std::uint32_t>(time_start.time);
  return static_cast<std::int32_t>(seconds * 1000U + time_stop.millitm - time_start.millitm);
}
