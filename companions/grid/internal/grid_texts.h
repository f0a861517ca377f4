// The texts of one column of a grid, by the numbers of the rows: four bytes and the units of the text for each row, in
// two blocks.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/types.h"

class GridTexts {
 public:
  // Valid until the next change. Empty for a row that was never set.
  TextView Get(std::uint32_t row) const {
    const std::uint32_t start = row < starts_.size() ? starts_[row] : 0;
    if (start == 0) return {};
    const std::size_t length = units_[start];
    if (length < kLong) return {units_.data() + start + 1, length};
    return {units_.data() + start + kLongHead, LongLength(start)};
  }
  // Raises std::length_error if the column would have more than 2^32 units.
  void Set(std::uint32_t row, TextView text);
  // Texts from now on, without repeated growth.
  void Reserve(std::size_t rows) { starts_.reserve(rows); }

 private:
  static constexpr std::size_t kLong = 0xFFFF;  // marks a text whose length is in the next two units
  static constexpr std::size_t kLongHead = 3;

  std::size_t LongLength(std::uint32_t start) const {
    return std::size_t(units_[start + 1]) << 16 | std::size_t(units_[start + 2]);
  }
  static std::size_t UnitsOf(std::size_t length) { return length + (length < kLong ? 1 : kLongHead); }
  std::uint32_t Append(TextView text);
  void Compact();

  std::vector<std::uint32_t> starts_;  // 0: empty
  std::vector<TCHAR> units_;           // the first one is not used
  std::size_t unused_ = 0;             // units of replaced texts
};
