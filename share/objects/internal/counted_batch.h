// CountedBatch, a counted value of which one thread wants many copies, such as a text that all records of a document
// have. The counter of its users is changed once for many copies: an atomic change costs more than all the rest of a
// copy. Not public.
#pragma once

#include <utility>

// Counted has AddUsers(int), and Adopt(const Counted&), which gives a copy that has been counted already.
template <class Counted>
class CountedBatch {
 public:
  CountedBatch() = default;
  ~CountedBatch() { value_.AddUsers(-left_); }
  CountedBatch(const CountedBatch&) = delete;
  CountedBatch& operator=(const CountedBatch&) = delete;

  const Counted& Get() const { return value_; }
  void Set(const Counted& value) {
    value_.AddUsers(-std::exchange(left_, 0));
    value_ = value;
  }
  Counted Take() {
    if (left_ == 0) value_.AddUsers(left_ = kAtOnce);
    --left_;
    return Counted::Adopt(value_);
  }

 private:
  static constexpr int kAtOnce = 64;

  Counted value_;
  int left_ = 0;  // copies that are counted and not taken yet
};
