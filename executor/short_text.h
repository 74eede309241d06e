// Copies strings that end in a NUL without looking for it first. Most rows of text are short and of
// mixed lengths: a loop to the end of each, and another one to copy it, make the processor guess
// wrong in both.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

/// Bytes that must be free where a short text goes, whatever its length.
constexpr std::size_t short_text_room = 64;

// Bytes behind the string are read, though never used. No more than the page that holds its first
// byte, which is there; but a sanitizer sees only bytes that nobody asked for.
#if defined(__SSE2__) && !defined(__SANITIZE_ADDRESS__)

#include <emmintrin.h>

/// Copies the text up to its NUL, if that is among the first bytes, and returns the byte behind it;
/// null where this is not known so simply. What is behind it, within the room, is left undefined.
inline char* copy_short_text(const char* text, char* to) {
  constexpr std::size_t page = 4096;  // or a multiple of it
  if (reinterpret_cast<std::uintptr_t>(text) % page > page - short_text_room) return nullptr;
  const __m128i zero = _mm_setzero_si128();
  std::uint64_t nulls = 0;
  for (unsigned at = 0; at < short_text_room; at += sizeof(__m128i)) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + at));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + at), bytes);
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, zero)));
    nulls |= std::uint64_t{mask} << at;
  }
  return nulls == 0 ? nullptr : to + std::countr_zero(nulls);
}

#else

inline char* copy_short_text(const char* /*text*/, char* /*to*/) { return nullptr; }

#endif
