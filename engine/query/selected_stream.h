// What a query selects on its way into another dataset or attribute.
#pragma once

#include "query/element_source.h"
#include "values/element_stream.h"

namespace kelvo {

/// Converts each element. Several items fill the members of a compound by their positions; one
/// compound fills another one by names where both have the same, else by positions.
class SelectedStream : public ElementStream {
 public:
  explicit SelectedStream(Selected selected) : selected_(std::move(selected)) {}

  void read_all(const Type& type, const Taker& take) override;

 private:
  Selected selected_;
};

}  // namespace kelvo
