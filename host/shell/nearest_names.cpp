#include "host/shell/nearest_names.h"

#include <algorithm>
#include <utility>

namespace kestrova {
namespace {

constexpr std::size_t kMost = 3;
constexpr std::size_t kLongest = 256;  // longer than any name of a command, setting or machine
constexpr std::size_t kShort = 5;      // letters of a word that may have one typing error only

// Number of letters to insert, delete or replace, and of neighbours to swap, to get from one text to the other.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> before, last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    before = std::exchange(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row[b.size()];
}

}  // namespace

std::string LowerAscii(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
  return text;
}

std::string NearestNames(std::vector<std::string> names, const std::string& wanted) {
  if (wanted.size() > kLongest) return "";
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  const std::string lower = LowerAscii(wanted);
  const std::size_t most = wanted.size() <= kShort ? 1 : wanted.size() / 2;
  std::vector<std::pair<std::size_t, std::string>> ranked;
  for (std::string& name : names) {
    const std::size_t distance = EditDistance(LowerAscii(name), lower);
    const bool shortened = wanted.size() > 1 && LowerAscii(name).starts_with(lower);
    if (shortened || (distance <= most && distance < name.size())) ranked.emplace_back(distance, std::move(name));
  }
  std::sort(ranked.begin(), ranked.end());
  ranked.resize(std::min(ranked.size(), kMost));
  std::string text;
  for (const auto& [distance, name] : ranked) text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::string NearestOr(std::vector<std::string> names, const std::string& wanted, const std::string& remedy) {
  const std::string nearest = NearestNames(std::move(names), wanted);
  return nearest.empty() ? "; " + remedy : "; the nearest: " + nearest;
}

}  // namespace kestrova
