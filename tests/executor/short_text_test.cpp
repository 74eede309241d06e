// Strings of all lengths, also at the very end of the memory that may be read: copied as they are,
// and none is missed.
#include "executor/short_text.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>

#include "executor/row_output.h"
#include "support/capture.h"

namespace {

constexpr std::size_t longest = 2 * short_text_room + 2;

// A page that no readable byte follows.
class LastPage {
 public:
  LastPage() {
    void* pages =
        mmap(nullptr, 2 * size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    begin_ = static_cast<char*>(pages);
    mprotect(begin_ + size_, size_, PROT_NONE);
  }
  LastPage(const LastPage&) = delete;
  LastPage& operator=(const LastPage&) = delete;
  ~LastPage() { munmap(begin_, 2 * size_); }

  // The text, its NUL that many bytes before the last one of the page; none of the other bytes is a
  // NUL.
  const char* place(const std::string& text, std::size_t behind) {
    std::memset(begin_, '#', size_);
    char* to = begin_ + size_ - behind - text.size() - 1;
    std::memcpy(to, text.c_str(), text.size() + 1);
    return to;
  }

 private:
  std::size_t size_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  char* begin_;
};

// Every byte but NUL.
std::string letters(std::size_t length) {
  std::string text(length, '\0');
  for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<char>(1 + i % 255);
  return text;
}

TEST(ShortText, IsPutOutWholeWhereverItLies) {
  LastPage page;
  std::string expected;
  const std::string output = capture_stdout([&] {
    for (std::size_t length = 0; length <= longest; ++length) {
      for (std::size_t behind = 0; behind <= longest; ++behind) {
        add_string(page.place(letters(length), behind), '\n');
        expected += letters(length) + "\n";
      }
    }
  });
  EXPECT_TRUE(expected == output);  // too long to be shown
}

#if defined(__SSE2__) && !defined(__SANITIZE_ADDRESS__)

TEST(ShortText, IsCopiedAtOnceBelowItsRoom) {
  LastPage page;
  for (std::size_t length = 0; length <= longest; ++length) {
    std::array<char, short_text_room> to{};
    const char* end = copy_short_text(page.place(letters(length), longest), to.data());
    ASSERT_EQ(length < short_text_room, end != nullptr) << length;
    if (end == nullptr) continue;
    EXPECT_EQ(letters(length), std::string(static_cast<const char*>(to.data()), end));
  }
}

#endif

}  // namespace
