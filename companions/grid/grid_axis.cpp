#include <algorithm>
#include <numeric>

#include "companions/grid/internal/grid_axis.h"

LONG GridAxis::PlaceOf(Number number) const {
  if (order_.empty()) return LONG(number);
  if (places_.empty()) {
    places_.resize(next_);
    for (std::size_t place = 0; place < order_.size(); ++place) places_[order_[place]] = LONG(place);
  }
  return places_[number];
}

void GridAxis::WriteOrder() {
  places_.clear();
  if (!order_.empty()) return;
  order_.resize(std::size_t(count_) + 1);
  std::iota(order_.begin(), order_.end(), Number{0});
}

std::vector<GridAxis::Number> GridAxis::Insert(LONG place, LONG count) {
  std::vector<Number> numbers;
  const bool plain = order_.empty() && free_.empty() && place == count_ + 1;
  for (LONG i = 0; i < count; ++i) {
    if (free_.empty()) {
      numbers.push_back(next_++);
      continue;
    }
    numbers.push_back(free_.back());
    free_.pop_back();
  }
  if (!plain) {
    WriteOrder();
    order_.insert(order_.begin() + place, numbers.begin(), numbers.end());
  }
  count_ += count;
  return numbers;
}

void GridAxis::Remove(LONG place, LONG count) {
  WriteOrder();
  const auto first = order_.begin() + place;
  for (auto number = first; number != first + count; ++number) {
    Hide(*number, false);
    free_.push_back(*number);
  }
  order_.erase(first, first + count);
  count_ -= count;
}

void GridAxis::Move(LONG from, LONG to) {
  WriteOrder();
  const auto begin = order_.begin();
  if (from < to) {
    std::rotate(begin + from, begin + from + 1, begin + to + 1);
  } else {
    std::rotate(begin + to, begin + from, begin + from + 1);
  }
}

void GridAxis::SetOrder(const std::vector<Number>& numbers) {
  WriteOrder();
  std::copy(numbers.begin(), numbers.end(), order_.begin() + 1);
}

std::vector<GridAxis::Number> GridAxis::Order() const {
  if (!order_.empty()) return {order_.begin() + 1, order_.end()};
  std::vector<Number> numbers(std::size_t{0} + std::size_t(count_));
  std::iota(numbers.begin(), numbers.end(), Number{1});
  return numbers;
}

void GridAxis::Hide(Number number, bool hide) {
  if (!hide && number >= hidden_.size()) return;
  if (number >= hidden_.size()) hidden_.resize(std::size_t(number) + 1);
  hidden_[number] = hide;
}
