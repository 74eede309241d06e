// Copies into fixed buffers that are checked against the buffer's size in every kind of build. A
// text that does not fit is never cut off: the process ends by SIGABRT with libc's report.
#pragma once

#include <cstddef>

/// Size of the buffers for option values, statements and prompts: at most 1023 characters and the
/// terminating NUL.
constexpr std::size_t text_size = 1024;

/// Copies source.
void bounded_copy(char (&destination)[text_size], const char* source);

/// Appends the first length bytes of source to the text that destination holds.
void bounded_append(char (&destination)[text_size], const char* source, std::size_t length);

/// Writes "path>".
void bounded_prompt(char (&destination)[text_size], const char* path);
