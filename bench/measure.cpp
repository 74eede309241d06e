// Runs a command and writes what it took to file descriptor 3: seconds in all, in user mode and in
// the system, and KiB of memory at most. A small process of its own, since the kernel counts a
// parent's memory into a child's peak.
//   measure COMMAND ARGUMENT...
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

namespace {

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

}  // namespace

int main(int /*count*/, char** arguments) {
  const auto begin = std::chrono::steady_clock::now();
  const pid_t child = vfork();
  if (child == 0) {
    execvp(arguments[1], arguments + 1);
    _exit(127);
  }
  int status = 0;
  rusage usage = {};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) return 126;
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
  dprintf(3, "%.6f %.6f %.6f %ld\n", wall.count(), seconds(usage.ru_utime), seconds(usage.ru_stime),
          usage.ru_maxrss);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 125;
}
