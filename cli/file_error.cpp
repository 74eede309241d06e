// What is wrong with a file is judged by the error number of the failed call alone; nothing is
// checked beforehand.
#include "cli/file_error.h"

#include <cerrno>
#include <cstdio>

// No sentence of its own for a missing file: a save file is created, so only its directory can be
// missing.
void report_open_error(const char* path, int error_number) {
  if (error_number == EACCES) {
    std::printf("Error when opening file \"%s\" as it is not accessible.\n\n", path);
  } else {
    std::printf("Error when opening file \"%s\".\n\n", path);
  }
}

void report_statement_file_error(const char* path, int error_number) {
  if (error_number == ENOENT) {
    std::printf("Error when opening file \"%s\" as it does not exist.\n\n", path);
  } else {
    report_open_error(path, error_number);
  }
}

void report_read_error(const char* path, ReadError error) {
  switch (error) {
    case read_size_unknown:
      std::printf("Error when reading file \"%s\" as its size could not be calculated.\n\n", path);
      break;
    case read_out_of_memory:
      std::printf("Error when reading file \"%s\" as there is not enough memory available.\n\n",
                  path);
      break;
    case read_too_short:
      std::printf("Error when reading file \"%s\".\n\n", path);
      break;
  }
}
