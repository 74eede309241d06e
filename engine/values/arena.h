// Memory for what elements point to: it is given back all at once, and used again for the elements
// that come next.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kelvo {

class Arena {
 public:
  /// Bytes that stay where they are until restart().
  std::byte* take(std::size_t size) {
    if (size > left_) begin_page(size);
    std::byte* taken = next_;
    next_ += size;
    left_ -= size;
    return taken;
  }

  /// The same, for values of any type.
  std::byte* take_aligned(std::size_t size) {
    const std::size_t gap =
        (alignment - reinterpret_cast<std::uintptr_t>(next_) % alignment) % alignment;
    if (gap > left_ || size > left_ - gap) {
      begin_page(size);  // which begins at such a multiple
    } else {
      take(gap);
    }
    return take(size);
  }

  /// Takes all back. Pages are kept, unless they are large or very many.
  void restart() noexcept {
    std::erase_if(pages_, [](const Page& page) { return page.size > page_bytes; });
    if (pages_.size() > most_kept) pages_.resize(most_kept);
    used_ = 0;
    next_ = nullptr;
    left_ = 0;
  }

 private:
  static constexpr std::size_t alignment = alignof(std::max_align_t);
  static constexpr std::size_t page_bytes = std::size_t{256} * 1024;
  static constexpr std::size_t most_kept = 32;

  struct Page {
    std::unique_ptr<std::byte[]> bytes;
    std::size_t size = 0;
  };

  void begin_page(std::size_t size) {
    while (used_ < pages_.size() && pages_[used_].size < size) ++used_;
    if (used_ == pages_.size()) {
      const std::size_t whole = std::max(size, page_bytes);
      pages_.push_back({std::make_unique_for_overwrite<std::byte[]>(whole), whole});
    }
    next_ = pages_[used_].bytes.get();
    left_ = pages_[used_].size;
    ++used_;
  }

  std::vector<Page> pages_;
  std::size_t used_ = 0;  // pages, the one that is being used included
  std::byte* next_ = nullptr;
  std::size_t left_ = 0;  // in that page
};

}  // namespace kelvo
