// Evaluates conditions, each by the loop over a batch that suits it.
#include "query/condition.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

using MaskColumn = Column<Mask>;

class Never : public Condition {
 public:
  void evaluate(const Batch& batch, const Mask* /*active*/, Mask* out) override {
    std::memset(out, 0, batch.count);
  }
};

class Comparing : public Condition {
 public:
  Comparing(CompareKernel kernel, OperandPointer left, OperandPointer right)
      : kernel_(kernel), left_(std::move(left)), right_(std::move(right)) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    const void* left = left_->evaluate(batch, active);
    kernel_(left, right_->evaluate(batch, active), batch.count, out);
    if (active != all_active()) keep_true(active, batch.count, out);
  }

 private:
  CompareKernel kernel_;
  OperandPointer left_;
  OperandPointer right_;
};

// AND of all parts, or OR of all.
class Chain : public Condition {
 public:
  Chain(std::vector<ConditionPointer> parts, bool conjunction)
      : parts_(std::move(parts)), conjunction_(conjunction) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    const std::size_t count = batch.count;
    parts_[0]->evaluate(batch, active, out);
    for (std::size_t part = 1; part < parts_.size(); ++part) {
      std::memcpy(open_.data(), conjunction_ ? out : active, count);
      if (!conjunction_) take_true(out, count, open_.data());
      if (!any_true(open_.data(), count)) return;
      parts_[part]->evaluate(batch, open_.data(), result_.data());
      // What is open in a disjunction is false up to now.
      if (conjunction_) {
        std::memcpy(out, result_.data(), count);
      } else {
        add_true(result_.data(), count, out);
      }
    }
  }

 private:
  std::vector<ConditionPointer> parts_;
  bool conjunction_;
  MaskColumn open_;
  MaskColumn result_;
};

class Negation : public Condition {
 public:
  explicit Negation(ConditionPointer operand) : operand_(std::move(operand)) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    operand_->evaluate(batch, active, result_.data());
    std::memcpy(out, active, batch.count);
    take_true(result_.data(), batch.count, out);
  }

 private:
  ConditionPointer operand_;
  MaskColumn result_;
};

class Matching : public Condition {
 public:
  Matching(OperandPointer text, LikePattern pattern)
      : text_(std::move(text)), pattern_(std::move(pattern)) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    const auto* texts = static_cast<const std::string_view*>(text_->evaluate(batch, active));
    for (std::size_t i = 0; i < batch.count; ++i)
      out[i] = static_cast<Mask>(active[i] != 0 && pattern_.matches(texts[i]));
  }

 private:
  OperandPointer text_;
  LikePattern pattern_;
};

class BeingNan : public Condition {
 public:
  explicit BeingNan(OperandPointer real) : real_(std::move(real)) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    // A NAN alone differs from itself.
    const void* reals = real_->evaluate(batch, active);
    unequal_(reals, reals, batch.count, out);
    keep_true(active, batch.count, out);
  }

 private:
  OperandPointer real_;
  CompareKernel unequal_ = compare_kernel(Comparison::not_equal, Domain::real, Domain::real);
};

template <typename Value>
class BeingIn : public Condition {
 public:
  BeingIn(OperandPointer operand, std::vector<Value> values)
      : operand_(std::move(operand)), values_(std::move(values)) {
    std::sort(values_.begin(), values_.end());
  }

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    const auto* values = static_cast<const Value*>(operand_->evaluate(batch, active));
    for (std::size_t i = 0; i < batch.count; ++i) {
      out[i] = active[i] &
               static_cast<Mask>(std::binary_search(values_.begin(), values_.end(), values[i]));
    }
  }

 private:
  OperandPointer operand_;
  std::vector<Value> values_;
};

}  // namespace

const Mask* all_active() {
  static const MaskColumn active = [] {
    MaskColumn column;
    column.fill(1);
    return column;
  }();
  return active.data();
}

ConditionPointer never() { return std::make_unique<Never>(); }

ConditionPointer comparing(CompareKernel kernel, OperandPointer left, OperandPointer right) {
  return std::make_unique<Comparing>(kernel, std::move(left), std::move(right));
}

ConditionPointer all_of(std::vector<ConditionPointer> parts) {
  return std::make_unique<Chain>(std::move(parts), /*conjunction=*/true);
}

ConditionPointer any_of(std::vector<ConditionPointer> parts) {
  return std::make_unique<Chain>(std::move(parts), /*conjunction=*/false);
}

ConditionPointer negation(ConditionPointer operand) {
  return std::make_unique<Negation>(std::move(operand));
}

ConditionPointer matching(OperandPointer text, LikePattern pattern) {
  return std::make_unique<Matching>(std::move(text), std::move(pattern));
}

ConditionPointer being_nan(OperandPointer real) {
  return std::make_unique<BeingNan>(std::move(real));
}

template <typename Value>
ConditionPointer being_in(OperandPointer operand, std::vector<Value> values) {
  return std::make_unique<BeingIn<Value>>(std::move(operand), std::move(values));
}

template ConditionPointer being_in(OperandPointer operand, std::vector<std::int64_t> values);
template ConditionPointer being_in(OperandPointer operand, std::vector<std::string_view> values);

}  // namespace kelvo
