#include <algorithm>

#include "companions/grid/internal/grid_covers.h"

namespace {

// Whether moving one from a place to another separates the places from first to last.
bool Splits(LONG from, LONG to, LONG first, LONG last) {
  if (from == to || first == last) return false;
  if (from >= first && from <= last) return true;
  const LONG shift = from < first ? 1 : 0;
  return to > first - shift && to <= last - shift;
}

bool IsPartly(LONG first, LONG last, LONG groupFirst, LONG groupLast) {
  const bool apart = groupLast < first || groupFirst > last;
  return !apart && (groupFirst < first || groupLast > last);
}

bool Contains(const GridRange& range, LONG row, LONG column) {
  return row >= range.top && row <= range.bottom && column >= range.left && column <= range.right;
}

}  // namespace

GridRange GridCovers::RangeOf(const Group& group) const {
  const LONG top = rows_.PlaceOf(group.row), left = columns_.PlaceOf(group.column);
  return {top, left, top + group.rows - 1, left + group.columns - 1};
}

template <class Predicate>
bool GridCovers::Any(Predicate predicate) const {
  return std::any_of(groups_.begin(), groups_.end(),
                     [&](const auto& entry) { return predicate(RangeOf(entry.second)); });
}

GridRange GridCovers::At(LONG row, LONG column) const {
  const auto [first, last] = groups_.equal_range(rows_.At(row));
  for (auto entry = first; entry != last; ++entry) {
    const GridRange range = RangeOf(entry->second);
    if (Contains(range, row, column)) return range;
  }
  return {row, column, row, column};
}

bool GridCovers::Add(const GridRange& range) {
  for (LONG row = range.top; row <= range.bottom; ++row) {
    const auto [first, last] = groups_.equal_range(rows_.At(row));
    for (auto entry = first; entry != last; ++entry) {
      const GridRange other = RangeOf(entry->second);
      if (other.left <= range.right && other.right >= range.left) return false;
    }
  }
  const Group group = {rows_.At(range.top), columns_.At(range.left), range.bottom - range.top + 1,
                       range.right - range.left + 1};
  for (LONG row = range.top; row <= range.bottom; ++row) groups_.emplace(rows_.At(row), group);
  several_rows_ += group.rows > 1;
  return true;
}

void GridCovers::Remove(LONG row, LONG column) {
  const GridRange range = At(row, column);
  const GridAxis::Number top = rows_.At(range.top), left = columns_.At(range.left);
  several_rows_ -= range.bottom > range.top;
  for (LONG place = range.top; place <= range.bottom; ++place) {
    const auto [first, last] = groups_.equal_range(rows_.At(place));
    const auto entry = std::find_if(
        first, last, [&](const auto& other) { return other.second.row == top && other.second.column == left; });
    if (entry != last) groups_.erase(entry);
  }
}

bool GridCovers::SplitByColumnMove(LONG from, LONG to) const {
  return Any([&](const GridRange& group) { return Splits(from, to, group.left, group.right); });
}
bool GridCovers::SplitByRowMove(LONG from, LONG to) const {
  return Any([&](const GridRange& group) { return Splits(from, to, group.top, group.bottom); });
}
bool GridCovers::SplitByColumn(LONG place) const {
  return Any([&](const GridRange& group) { return place > group.left && place <= group.right; });
}
bool GridCovers::SplitByRow(LONG place) const {
  return Any([&](const GridRange& group) { return place > group.top && place <= group.bottom; });
}
bool GridCovers::PartlyInColumns(LONG first, LONG last) const {
  return Any([&](const GridRange& group) { return IsPartly(first, last, group.left, group.right); });
}
bool GridCovers::PartlyInRows(LONG first, LONG last) const {
  return Any([&](const GridRange& group) { return IsPartly(first, last, group.top, group.bottom); });
}

void GridCovers::RemoveIn(const GridRange& range) {
  for (auto entry = groups_.begin(); entry != groups_.end();) {
    const GridRange group = RangeOf(entry->second);
    const bool inside = group.top >= range.top && group.bottom <= range.bottom && group.left >= range.left &&
                        group.right <= range.right;
    // A group has an entry for each row and is counted at its first.
    if (inside && entry->first == entry->second.row) several_rows_ -= entry->second.rows > 1;
    entry = inside ? groups_.erase(entry) : std::next(entry);
  }
}
