// CountedBatch, a reference-counted value that one thread copies often, for example a text that all records of a
// document have. It raises the atomic counter once for 64 copies, because an atomic change costs more than the rest of
// a copy. Not public.
#pragma once

#include <utility>

// Counted has AddUsers(int) and Adopt(const Counted&), which returns a copy without counting it.
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
  int left_ = 0;  // counted copies that Take has not returned yet
};
