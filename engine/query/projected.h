// The elements that a query selects, in the order in which they are stored, and a part of them.
#pragma once

#include "query/element_source.h"
#include "query/query_run.h"

namespace kelvo {

/// Elements that fulfil the condition, made into the query's items.
class Projected : public ElementSource {
 public:
  explicit Projected(QueryRunPointer run) : run_(std::move(run)) {}

  [[nodiscard]] const Type& type() const override { return run_->projection->type(); }
  bool next(Elements& elements) override;
  [[nodiscard]] bool is_plain() const override;
  void rewind() override { run_->scan->restart(); }

 private:
  QueryRunPointer run_;
  std::vector<std::byte> bytes_;
};

/// At most `count` elements of another source, after the first `offset` ones; then it asks no more.
class Limited : public ElementSource {
 public:
  Limited(std::unique_ptr<ElementSource> source, Extent offset, Extent count)
      : source_(std::move(source)), offset_(offset), count_(count), skip_(offset), left_(count) {}

  [[nodiscard]] const Type& type() const override { return source_->type(); }
  bool next(Elements& elements) override;
  [[nodiscard]] bool is_plain() const override { return source_->is_plain(); }
  void rewind() override;

 private:
  std::unique_ptr<ElementSource> source_;
  Extent offset_;
  Extent count_;
  Extent skip_;
  Extent left_;
};

/// The steps of the first dimension that hold the elements from `offset` to `offset + count`, so
/// that others are not read. `*offset` becomes that within the result.
Selection cut(Selection selection, Extent* offset, Extent count);

}  // namespace kelvo
