// Elements from a query, converted a block at a time.
#include "query/selected_stream.h"

#include <algorithm>

#include "values/convert.h"

namespace kelvo {
namespace {

// Converted elements may be larger than those read, and bring varying parts along.
constexpr std::size_t elements_per_block = 65536;

}  // namespace

void SelectedStream::read_all(const Type& type, const Taker& take) {
  const Type& from = selected_.source->type();
  const bool by_name = !selected_.several_items && have_same_members(from, type);
  Conversion conversion(from, type, by_name ? MemberMatch::by_name : MemberMatch::by_position,
                        selected_.namer);
  EncodedElements block(type);
  Elements elements;
  while (selected_.source->next(elements)) {
    for (std::size_t done = 0; done < elements.count; done += block.count(), block.clear()) {
      const std::size_t count = std::min(elements_per_block, elements.count - done);
      conversion.append(elements.data + done * from.size, count, &block);
      take(block);
    }
  }
}

}  // namespace kelvo
