// The elements that a query selects, in the order that ORDER BY asks for.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "query/element_source.h"
#include "query/query_run.h"
#include "query/sorter.h"
#include "values/arena.h"

namespace kelvo {

class Sorted : public ElementSource {
 public:
  /// Only the first `wanted` elements of the order are asked for.
  Sorted(QueryRunPointer run, std::uint64_t wanted);

  [[nodiscard]] const Type& type() const override { return run_->projection->type(); }
  bool next(Elements& elements) override;
  std::optional<std::uint64_t> read_all() override;

 private:
  void add_batch(const Batch& batch, const Mask* selected);
  SortKey key_of(std::size_t i);
  std::string_view payload_of(const std::byte* element);
  void restore(std::string_view payload, std::byte* element);

  QueryRunPointer run_;
  std::vector<OperandPointer> keys_;
  bool is_varying_;
  Sorter sorter_;  // behind what tells how large records are
  std::uint64_t wanted_;
  std::uint64_t count_ = 0;  // of elements that were read
  bool is_read_ = false;
  std::vector<const void*> columns_;               // of the keys of a batch
  std::array<std::uint64_t, batch_size> numbers_;  // of its first keys, where they are numbers
  std::string key_;
  std::vector<std::byte> payload_;
  std::vector<std::byte> bytes_;
  Arena parts_;
};

}  // namespace kelvo
