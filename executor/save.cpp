// Writes to the save file and reports a failed write.
#include "executor/save.h"

#include <cerrno>

void save_statement(const char* statement, const char* path, std::FILE* file) {
  if (std::fprintf(file, "%s\n", statement) >= 0) {
    // Not checked, by intention: an error that shows only here goes unreported.
    std::fflush(file);
    return;
  }
  if (errno == ENOSPC) {
    std::printf(
        "Error when writing operation \"%s\" into file \"%s\" as there is not enough space "
        "available.\n",
        statement, path);
  } else {
    std::printf("Error when writing operation \"%s\" into file \"%s\".\n", statement, path);
  }
}
