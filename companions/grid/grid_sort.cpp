// Sorting the rows of a grid: a stable sort by each key, the last one first.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "companions/grid/internal/grid_state.h"
#include "platform/collation.h"

namespace {

using Number = GridAxis::Number;

constexpr int kMostKeyBytes = 4096;  // first tried size

struct Entry {
  std::uint64_t key;  // in the order of the values
  Number row;
};

// The bits of a number, in the order of the numbers.
std::uint64_t BitsOf(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);  // -0.0 equals 0.0
  return bits >> 63 ? ~bits : bits | std::uint64_t{1} << 63;
}

// Sorts by the key, stable: a counting sort for each eleven bits that differ.
void SortByKey(std::vector<Entry>& entries) {
  constexpr int kBits = 11;
  constexpr std::size_t kDigits = std::size_t{1} << kBits;
  std::vector<Entry> other(entries.size());
  for (int shift = 0; shift < 64; shift += kBits) {
    std::array<std::uint32_t, kDigits> starts = {};
    for (const Entry& entry : entries) ++starts[entry.key >> shift & (kDigits - 1)];
    if (std::find(starts.begin(), starts.end(), entries.size()) != starts.end()) continue;
    std::uint32_t sum = 0;
    for (std::uint32_t& start : starts) start = std::exchange(sum, sum + start);
    for (const Entry& entry : entries) other[starts[entry.key >> shift & (kDigits - 1)]++] = entry;
    entries.swap(other);
  }
}

// The sort keys of texts, in one block, with the order of the user's language.
class TextKeys {
 public:
  // Returns the text's position among all that were added.
  std::uint64_t Add(Number row, TextView text) {
    int bytes = Write(text, kMostKeyBytes);
    if (bytes == 0)
      bytes = Write(text, LCMapStringEx(LOCALE_NAME_USER_DEFAULT, LCMAP_SORTKEY, text.data(), int(text.size()), nullptr,
                                        0, nullptr, nullptr, 0));
    const std::size_t start = used_;
    used_ += std::size_t(bytes);
    entries_.push_back({PrefixAt(start), start, std::uint32_t(bytes), row});
    return entries_.size() - 1;
  }
  // Appends the rows of these positions in order; equal texts keep the order of the positions.
  void Sort(const std::vector<std::uint64_t>& positions, bool descending, std::vector<Number>& rows) const {
    std::vector<TextEntry> entries;
    entries.reserve(positions.size());
    for (const std::uint64_t position : positions) entries.push_back(entries_[position]);
    std::stable_sort(entries.begin(), entries.end(),
                     [&](const TextEntry& a, const TextEntry& b) { return descending ? IsLess(b, a) : IsLess(a, b); });
    for (const TextEntry& entry : entries) rows.push_back(entry.row);
  }

 private:
  struct TextEntry {
    std::uint64_t prefix;  // the first bytes
    std::size_t start;
    std::uint32_t bytes;
    Number row;
  };

  int Write(TextView text, int room) {
    if (room <= 0) return 0;
    if (bytes_.size() < used_ + std::size_t(room))
      bytes_.resize(std::max(bytes_.size() * 2, used_ + std::size_t(room)));
    return LCMapStringEx(LOCALE_NAME_USER_DEFAULT, LCMAP_SORTKEY, text.data(), int(text.size()),
                         reinterpret_cast<LPTSTR>(bytes_.data() + used_), room, nullptr, nullptr, 0);
  }
  std::uint64_t PrefixAt(std::size_t start) const {
    std::uint64_t prefix = 0;
    for (std::size_t i = 0; i < sizeof prefix; ++i)
      prefix = prefix << 8 | (start + i < used_ ? bytes_[start + i] : BYTE(0));
    return prefix;
  }
  bool IsLess(const TextEntry& a, const TextEntry& b) const {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    const int order = std::memcmp(bytes_.data() + a.start, bytes_.data() + b.start, std::min(a.bytes, b.bytes));
    return order != 0 ? order < 0 : a.bytes < b.bytes;
  }

  std::vector<BYTE> bytes_;
  std::size_t used_ = 0;
  std::vector<TextEntry> entries_;
};

bool IsKnown(int type) { return type == kGridSortText || type == kGridSortNumber || type == kGridSortAutomatic; }

enum class Value : BYTE { kEmpty, kNumber, kText, kEqual };

// What the cells of a column are compared by, for each number of a row. The cells are read in the order of their
// memory, not of their places.
struct ColumnValues {
  ColumnValues(const GridTexts& texts, const GridSortKey& key, Number last)
      : kinds(std::size_t(last) + 1), keys(std::size_t(last) + 1) {
    const TCHAR sign = GridDecimalSign();
    for (Number row = 1; row <= last; ++row) {
      const TextView text = texts.Get(row);
      double value = 0;
      if (text.empty()) continue;
      if (key.type != kGridSortText && ReadGridNumber(text, sign, value)) {
        kinds[row] = Value::kNumber;
        keys[row] = key.order == 0 ? ~BitsOf(value) : BitsOf(value);
      } else if (key.type == kGridSortNumber) {
        kinds[row] = Value::kEqual;
      } else {
        kinds[row] = Value::kText;
        keys[row] = text_keys.Add(row, text);
      }
    }
  }

  std::vector<Value> kinds;
  std::vector<std::uint64_t> keys;  // of a number its bits, of a text its position in text_keys
  TextKeys text_keys;
};

// Sorts the numbers of rows by one key.
void SortByColumn(const GridTexts& texts, const GridSortKey& key, std::vector<Number>& rows) {
  if (rows.empty()) return;
  const bool descending = key.order == 0;
  const ColumnValues values(texts, key, *std::max_element(rows.begin(), rows.end()));
  std::vector<Entry> numbers;
  std::vector<std::uint64_t> positions;
  std::vector<Number> equal, empty;
  for (const Number row : rows) {
    switch (values.kinds[row]) {
      case Value::kEmpty: empty.push_back(row); break;
      case Value::kNumber: numbers.push_back({values.keys[row], row}); break;
      case Value::kText: positions.push_back(values.keys[row]); break;
      case Value::kEqual: equal.push_back(row); break;
    }
  }
  SortByKey(numbers);
  rows.clear();
  if (descending) values.text_keys.Sort(positions, descending, rows);
  for (const Entry& entry : numbers) rows.push_back(entry.row);
  if (!descending) values.text_keys.Sort(positions, descending, rows);
  rows.insert(rows.end(), equal.begin(), equal.end());
  rows.insert(rows.end(), empty.begin(), empty.end());
}

}  // namespace

GridResult CGXGridCore::SortRows(std::span<const GridSortKey> keys) {
  State& state = *m_State;
  for (const GridSortKey& key : keys) {
    if (!HasColumn(key.column)) return GridResult::kOutside;
    if (!IsKnown(key.type)) return GridResult::kBadKey;
  }
  if (keys.empty()) return GridResult::kDone;
  if (state.covers.HasSeveralRows()) return GridResult::kWouldSplitCovered;
  std::vector<Number> rows = state.rows.Order();
  for (auto key = keys.rbegin(); key != keys.rend(); ++key) SortByColumn(state.TextsAt(key->column), *key, rows);
  state.rows.SetOrder(rows);
  state.sorted_column = state.columns.At(keys.front().column);
  state.sorted_descending = keys.front().order == 0;
  state.selected = {};
  return GridResult::kDone;
}

GridResult CGXGridCore::SortByHeader(LONG column) {
  const bool reverse = GetSortedColumn() == column && GetSortDirection() == 0;
  const GridSortKey key = {column, kGridSortAutomatic, reverse ? 0 : 1};
  return SortRows({&key, 1});
}

LONG CGXGridCore::GetSortedColumn() const {
  return m_State->sorted_column ? m_State->columns.PlaceOf(*m_State->sorted_column) : -1;
}

int CGXGridCore::GetSortDirection() const { return m_State->sorted_descending ? 1 : 0; }
