/* A library to preload that makes calls of the program fail, or tells of them, as environment
 * variables ask:
 *
 *   FAULT_FOPEN=NUMBER        fopen of the file that FAULT_PATH names fails with this errno
 *   FAULT_FREAD=1             fread reads one item less than it was asked for
 *   FAULT_FSEEK=1             fseek fails
 *   FAULT_FTELL=1             ftell answers -1
 *   FAULT_MALLOC=SIZE         malloc of exactly this many bytes fails
 *   FAULT_SIGACTION=1         sigaction fails and changes nothing
 *   FAULT_PWRITE=NUMBER       the pwrite of this number, counted from 1, fails for want of room
 *   FAULT_RENAME=NUMBER       the renameat2 of this number fails as one that is not permitted
 *   FAULT_UNLINK=NUMBER       the unlink of this number fails with an error of the device
 *   FAULT_CLOCK_STEP=NUMBER   ftime answers a clock that moves by so many milliseconds each call
 *   FAULT_STREAMS=PATH        each fopen, with its mode, and fclose is appended to this file
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/timeb.h>
#include <time.h>
#include <unistd.h>

/* The next function of that name: the real one. C has no cast from an object's address to a
 * function's, so it is copied. */
#define FIND_REAL(function)                      \
  static __typeof__(function)* real = NULL;      \
  if (real == NULL) {                            \
    void* address = dlsym(RTLD_NEXT, #function); \
    memcpy(&real, &address, sizeof real);        \
  }

static int asked(const char* fault) { return getenv(fault) != NULL; }

/* The names of the streams that the program opened, for what is told when they are closed. */
enum { max_streams = 16 };
static struct {
  FILE* stream;
  char name[256];
} streams[max_streams];

static void tell(const char* fault, const char* format, ...) {
  const char* path = getenv(fault);
  if (path == NULL) return;
  char line[2048];
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND, 0666);
  if (write(file, line, (size_t)length) != length) abort();
  close(file);
}

static void remember(FILE* stream, const char* name) {
  for (int i = 0; i < max_streams; ++i) {
    if (streams[i].stream == NULL) {
      streams[i].stream = stream;
      snprintf(streams[i].name, sizeof streams[i].name, "%s", name);
      return;
    }
  }
}

FILE* fopen(const char* path, const char* mode) {
  FIND_REAL(fopen)
  tell("FAULT_STREAMS", "fopen %s %s\n", path, mode);
  if (asked("FAULT_FOPEN") && strcmp(path, getenv("FAULT_PATH")) == 0) {
    errno = atoi(getenv("FAULT_FOPEN"));
    return NULL;
  }
  FILE* stream = real(path, mode);
  if (stream != NULL) remember(stream, path);
  return stream;
}

int fclose(FILE* stream) {
  FIND_REAL(fclose)
  for (int i = 0; i < max_streams; ++i) {
    if (streams[i].stream == stream) {
      tell("FAULT_STREAMS", "fclose %s\n", streams[i].name);
      streams[i].stream = NULL;
    }
  }
  return real(stream);
}

/* Readline's. */
void add_history(const char* line);

void add_history(const char* line) {
  FIND_REAL(add_history)
  tell("FAULT_HISTORY", "%s\n", line);
  real(line);
}

size_t fread(void* buffer, size_t size, size_t count, FILE* stream) {
  FIND_REAL(fread)
  return real(buffer, size, asked("FAULT_FREAD") ? count - 1 : count, stream);
}

int fseek(FILE* stream, long offset, int origin) {
  FIND_REAL(fseek)
  return asked("FAULT_FSEEK") ? -1 : real(stream, offset, origin);
}

long ftell(FILE* stream) {
  FIND_REAL(ftell)
  return asked("FAULT_FTELL") ? strtol(getenv("FAULT_FTELL"), NULL, 10) : real(stream);
}

void* malloc(size_t size) {
  FIND_REAL(malloc)
  const char* refused = getenv("FAULT_MALLOC");
  if (refused != NULL && size == strtoul(refused, NULL, 10)) {
    errno = ENOMEM;
    return NULL;
  }
  return real(size);
}

int sigaction(int signal, const struct sigaction* action, struct sigaction* old_action) {
  FIND_REAL(sigaction)
  if (asked("FAULT_SIGACTION")) {
    errno = EINVAL;
    return -1;
  }
  return real(signal, action, old_action);
}

static int is_to_fail(const char* fault, int* calls) {
  const char* number = getenv(fault);
  return number != NULL && ++*calls == atoi(number);
}

static int pwrites = 0;

ssize_t pwrite(int file, const void* bytes, size_t count, off_t offset) {
  FIND_REAL(pwrite)
  if (!is_to_fail("FAULT_PWRITE", &pwrites)) return real(file, bytes, count, offset);
  errno = ENOSPC;
  return -1;
}

ssize_t pwrite64(int file, const void* bytes, size_t count, off64_t offset) {
  FIND_REAL(pwrite64)
  if (!is_to_fail("FAULT_PWRITE", &pwrites)) return real(file, bytes, count, offset);
  errno = ENOSPC;
  return -1;
}

int renameat2(int from_directory, const char* from, int to_directory, const char* to,
              unsigned flags) {
  static int renames = 0;
  FIND_REAL(renameat2)
  if (!is_to_fail("FAULT_RENAME", &renames))
    return real(from_directory, from, to_directory, to, flags);
  errno = EPERM;
  return -1;
}

int unlink(const char* path) {
  static int unlinks = 0;
  FIND_REAL(unlink)
  if (!is_to_fail("FAULT_UNLINK", &unlinks)) return real(path);
  errno = EIO;
  return -1;
}

int ftime(struct timeb* now) {
  static long long milliseconds = 1000000000;
  const char* step = getenv("FAULT_CLOCK_STEP");
  if (step == NULL) {
    struct timespec time;
    clock_gettime(CLOCK_REALTIME, &time);
    milliseconds = time.tv_sec * 1000LL + time.tv_nsec / 1000000;
  } else {
    milliseconds += atoll(step);
  }
  memset(now, 0, sizeof *now);
  now->time = (time_t)(milliseconds / 1000);
  now->millitm = (unsigned short)(milliseconds % 1000);
  return 0;
}
