// The names that are in use.
#include "storage/temporary_name.h"

#include <unistd.h>

#include <utility>
#include <vector>

namespace kelvo {
namespace {

// Copies, since their owners may be gone.
std::vector<std::string>& names() {
  static std::vector<std::string> all;
  return all;
}

}  // namespace

TemporaryName::TemporaryName(std::string path) : path_(std::move(path)) {
  names().push_back(path_);
}

TemporaryName::~TemporaryName() {
  ::unlink(path_.c_str());
  std::erase(names(), path_);
}

void remove_temporary_names() noexcept {
  for (const std::string& name : names()) ::unlink(name.c_str());
  names().clear();
}

}  // namespace kelvo
