// The one element that a query of aggregates gives.
#pragma once

#include <vector>

#include "query/accumulator.h"
#include "query/element_source.h"
#include "query/query_run.h"

namespace kelvo {

class Aggregated : public ElementSource {
 public:
  explicit Aggregated(QueryRunPointer run);

  [[nodiscard]] const Type& type() const override { return type_; }
  bool next(Elements& elements) override;

 private:
  struct Column {
    OperandPointer operand;  // none for a count
    AccumulatorPointer accumulator;
    bool active = true;  // takes part in the pass
  };

  void add_item(const QueryItem& item);
  [[nodiscard]] bool only_counts() const;
  void count_all(Extent elements);
  void read();
  void read_once();
  void add_batch(const Batch& batch, const Mask* selected);

  QueryRunPointer run_;
  Type type_;
  std::vector<Column> columns_;
  std::vector<std::uint64_t> chosen_;  // the values of a batch's selected elements
  std::vector<std::byte> result_;
  bool done_ = false;
};

}  // namespace kelvo
