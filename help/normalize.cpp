// One pass from source to destination; the result is never longer than the source.
#include "help/normalize.h"

#include <cctype>

void normalize_text(const char* source, char* destination) {
  char* end = destination;
  for (; *source != '\0'; ++source) {
    if (!is_blank(*source)) {
      *end++ = static_cast<char>(std::toupper(static_cast<unsigned char>(*source)));
    } else if (end != destination && end[-1] != ' ') {
      *end++ = ' ';
    }
  }
  if (end != destination && end[-1] == ' ') --end;
  *end = '\0';
}
