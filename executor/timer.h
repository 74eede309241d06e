// Wall-clock time of one engine call, to the millisecond.
#pragma once

#include <sys/timeb.h>

#include <cstdint>

/// When the statement timed last began and ended.
extern struct timeb time_start;
extern struct timeb time_stop;

void timer_start();
void timer_stop();

/// Milliseconds from time_start to time_stop, in 32-bit arithmetic that wraps around on every
/// machine.
std::int32_t timer_elapsed();
