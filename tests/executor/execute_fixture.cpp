// The fixture's clock, and its runs of execute.
#include "executor/execute_fixture.h"

#include <sys/timeb.h>
#include <unistd.h>

#include <vector>

#include "executor/execute.h"
#include "executor/interrupt.h"
#include "support/capture.h"
#include "support/scripted_engine.h"

std::deque<long long> clock_readings;
int clock_calls;

// Takes the place of libc's clock in this program.
extern "C" int ftime(struct timeb* now) {
  const long long reading = clock_readings.front();
  if (clock_readings.size() > 1) {
    clock_readings.pop_front();
  }
  ++clock_calls;
  *now = {};
  now->time = static_cast<time_t>(reading / 1000);
  now->millitm = static_cast<unsigned short>(reading % 1000);
  return 0;
}

ExecuteTest::ExecuteTest() : save_file_(std::tmpfile()) {
  scripted::engine().reset();
  clock_readings = {1000};
  clock_calls = 0;
  interrupt_status = 0;
}

ExecuteTest::~ExecuteTest() { interrupt_status = 0; }

int ExecuteTest::run(const std::string& text, int no_status, const char* path,
                     std::FILE* save_file) {
  std::vector<char> buffer(text.c_str(), text.c_str() + text.size() + 1);
  int status = 0;
  output_ = capture_stdout([&] { status = execute(buffer.data(), no_status, path, save_file); });
  return status;
}

std::string ExecuteTest::saved() const {
  char content[4096];
  const ssize_t size = pread(fileno(save_file_.get()), content, sizeof content, 0);
  return std::string(content, static_cast<std::size_t>(size));
}
