// The canonical form of a statement, in which the front end's own commands and the help topics are
// recognised.
#pragma once

/// Whether a byte separates words: the space and the horizontal tab do, no other byte does.
constexpr bool is_blank(char byte) { return byte == ' ' || byte == '\t'; }

/// Writes the normalised form of source into destination: upper case (libc's toupper, byte by
/// byte), each run of blanks one space, no blanks at either end. It knows nothing of quotes: its
/// result is for comparisons, never for execution. The two buffers are distinct; destination holds
/// at least the length of source plus one bytes.
void normalize_text(const char* source, char* destination);
