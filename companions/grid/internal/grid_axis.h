// The rows or the columns of a grid: each has a number that stays the same, and a place, from 1, that changes when it
// is moved or sorted. Number and place 0 are the header's. The numbers of removed ones are used again.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/types.h"

class GridAxis {
 public:
  using Number = std::uint32_t;

  LONG Count() const { return count_; }
  // The number at a place from 0 to Count().
  Number At(LONG place) const { return order_.empty() ? Number(place) : order_[std::size_t(place)]; }
  LONG PlaceOf(Number number) const;

  // Places from 1 to Count() + 1, so that the new ones begin there. Returns their numbers.
  std::vector<Number> Insert(LONG place, LONG count);
  void Remove(LONG place, LONG count);
  void Move(LONG from, LONG to);
  // All numbers in their new order, place 1 first.
  void SetOrder(const std::vector<Number>& numbers);
  // The present order in that form.
  std::vector<Number> Order() const;

  bool IsHidden(Number number) const { return number < hidden_.size() && hidden_[number]; }
  void Hide(Number number, bool hide);

 private:
  void WriteOrder();

  LONG count_ = 0;
  Number next_ = 1;                   // the first number that was never used
  std::vector<Number> free_;          // of removed ones
  std::vector<Number> order_;         // with the header; empty: the numbers are the places
  mutable std::vector<LONG> places_;  // by number; empty: not computed
  std::vector<bool> hidden_;          // by number
};
