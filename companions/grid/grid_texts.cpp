#include <limits>
#include <stdexcept>
#include <utility>

#include "companions/grid/internal/grid_texts.h"

namespace {

constexpr std::size_t kFewUnits = 1 << 16;

}  // namespace

void GridTexts::Set(std::uint32_t row, TextView text) {
  const TextView former = Get(row);
  if (former == text) return;
  if (row >= starts_.size()) starts_.resize(std::size_t(row) + 1);
  if (!former.empty()) unused_ += UnitsOf(former.size());
  if (text.empty()) {
    starts_[row] = 0;
  } else if (text.data() >= units_.data() && text.data() < units_.data() + units_.size()) {
    starts_[row] = Append(Text(text));  // a text of this column moves when the block grows
  } else {
    starts_[row] = Append(text);
  }
  if (unused_ > kFewUnits && unused_ > units_.size() / 2) Compact();
}

std::uint32_t GridTexts::Append(TextView text) {
  if (units_.empty()) units_.push_back(0);
  if (text.size() > std::numeric_limits<std::uint32_t>::max() - kLongHead - units_.size())
    throw std::length_error("a column of a grid has at most 2^32 characters");
  const auto start = std::uint32_t(units_.size());
  if (text.size() < kLong) {
    units_.push_back(TCHAR(text.size()));
  } else {
    units_.insert(units_.end(), {TCHAR(kLong), TCHAR(text.size() >> 16), TCHAR(text.size() & 0xFFFF)});
  }
  units_.insert(units_.end(), text.begin(), text.end());
  return start;
}

void GridTexts::Compact() {
  GridTexts compact;
  compact.units_.reserve(units_.size() - unused_ + 1);
  compact.starts_.resize(starts_.size());
  for (std::uint32_t row = 0; row < starts_.size(); ++row) {
    if (const TextView text = Get(row); !text.empty()) compact.starts_[row] = compact.Append(text);
  }
  *this = std::move(compact);
}
