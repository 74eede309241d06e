// Debug lines.
#include "debug.h"

#include <cstdio>

#include "storage/check.h"
#include "storage/traffic.h"

namespace kelvo {
namespace {

void show_line(const std::string& text) {
  std::printf("[debug] %s\n", without_secrets(text).c_str());
}

void show_traffic(const char* what, const Traffic& traffic) {
  if (traffic.elements == 0) return;
  show_line(what + (": " + std::to_string(traffic.elements)) + " elements, " +
            std::to_string(traffic.bytes) + " bytes");
}

void show_stack(const std::string& lines) {
  for (std::size_t begin = 0; begin < lines.size();) {
    const std::size_t end = lines.find('\n', begin);
    show_line("hdf5: " + lines.substr(begin, end - begin));
    if (end == std::string::npos) return;
    begin = end + 1;
  }
}

}  // namespace

StatementLog::StatementLog(const char* statement) {
  traffic_read() = traffic_written() = {};
  take_failure_stack();
  show_line(std::string("statement: ") + statement);
}

void StatementLog::add_form(std::string_view keywords) {
  if (!form_.empty()) form_ += ' ';
  form_ += keywords;
}

// Once, as soon as all its words are known: when something is done with it.
void StatementLog::show_form() {
  if (!form_.empty()) show_line("form: " + form_);
  form_.clear();
}

void StatementLog::show_object(const std::string& object, const std::string& file) {
  show_form();
  show_line("object: " + quoted(object) + " in file " + quoted(file));
}

void StatementLog::show_end(Status status, std::uint64_t returned) {
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - begin_;
  show_form();
  show_traffic("read", traffic_read());
  show_traffic("written", traffic_written());
  if (status != Status::done) show_stack(take_failure_stack());
  std::printf("[debug] status: %d, %llu elements returned, %.3f ms\n", static_cast<int>(status),
              static_cast<unsigned long long>(returned), elapsed.count());
}

}  // namespace kelvo
