// Loops over columns, compiled twice: for any processor of the machine's kind, and for one with
// vectors of 256 bits, which holds four doubles in the place of two and compares 64-bit integers.
#pragma once

namespace kelvo {

inline bool has_wide_vectors() noexcept {
#ifdef __x86_64__
  return __builtin_cpu_supports("avx2") != 0;
#else
  return false;
#endif
}

template <auto loop>
struct Compiled;

template <typename... Arguments, void (*loop)(Arguments...)>
struct Compiled<loop> {
  static void plainly(Arguments... arguments) { loop(arguments...); }
#ifdef __x86_64__
  [[gnu::target("avx2")]]
#endif
  static void
  widely(Arguments... arguments) {
    loop(arguments...);
  }
};

/// The loop in the form that is quickest on the processor that runs it. It must be
/// [[gnu::always_inline]]: what it calls is compiled for each form only where it is inlined.
template <auto loop>
auto quickest() noexcept {
  return has_wide_vectors() ? Compiled<loop>::widely : Compiled<loop>::plainly;
}

}  // namespace kelvo
