#include "host/document/instance_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <unordered_set>

#include "host/shell/failure.h"
#include "share/patterns/pattern_info.h"

namespace kestrova {
namespace {

constexpr std::size_t kMostForNearest = 20'000;  // the search takes time in proportion to the square

// Reads a number at the start of the text and removes it. False if there is none.
bool TakeNumber(std::string_view& text, int& number) {
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || number < 0) return false;
  text.remove_prefix(std::size_t(stop - text.data()));
  return true;
}

std::vector<int> ActiveInstances(QFPatternInfo& pattern) {
  std::vector<int> numbers;
  for (LONGLONG instance = 0; instance < pattern.GetNumPatternInstances(); ++instance)
    if (pattern.GetInstanceStatus(instance) == ePatternInstanceActive) numbers.push_back(int(instance));
  return numbers;
}

}  // namespace

std::vector<int> ParseInstances(const std::string& text, LONGLONG count) {
  std::vector<int> numbers;
  std::unordered_set<int> seen;
  std::string_view left = text;
  do {
    int first = 0, last = 0;
    if (!TakeNumber(left, first)) break;
    last = first;
    if (left.starts_with('-')) {
      left.remove_prefix(1);
      if (!TakeNumber(left, last) || last < first) break;
    }
    if (last >= count) throw WrongUsage(fmt::format("there is no instance {}; the last one is {}", last, count - 1));
    for (int number = first; number <= last; ++number) {
      if (!seen.insert(number).second) throw WrongUsage(fmt::format("instance {} is named twice", number));
      numbers.push_back(number);
    }
    if (left.empty()) return numbers;
    if (!left.starts_with(',')) break;
    left.remove_prefix(1);
  } while (true);
  throw WrongUsage(fmt::format("\"{}\" is not a list of instances, such as 1,3-4", text));
}

std::vector<int> Backwards(QFPatternInfo& pattern) {
  std::vector<int> numbers = ActiveInstances(pattern);
  std::reverse(numbers.begin(), numbers.end());
  return numbers;
}

std::vector<int> NearestFirst(QFPatternInfo& pattern) {
  std::vector<int> numbers = ActiveInstances(pattern);
  if (numbers.size() > kMostForNearest)
    throw Failure(fmt::format("the pattern has {} active instances, and --by nearest takes up to {}", numbers.size(),
                              kMostForNearest));
  std::vector<FRPosition> places;
  for (const int number : numbers) {
    FRTransf transform;
    pattern.GetTransfForInst(number, transform);
    places.push_back(pattern.GetRefPosOfObject() * transform);
  }
  for (std::size_t done = 1; done < numbers.size(); ++done) {
    const FRPosition from = places[done - 1];
    std::size_t nearest = done;
    const auto isNearer = [&](std::size_t a, std::size_t b) {
      const double to_a = from.distance(places[a]), to_b = from.distance(places[b]);
      return to_a != to_b ? to_a < to_b : numbers[a] < numbers[b];
    };
    for (std::size_t at = done + 1; at < numbers.size(); ++at)
      if (isNearer(at, nearest)) nearest = at;
    std::swap(numbers[done], numbers[nearest]);
    std::swap(places[done], places[nearest]);
  }
  return numbers;
}

}  // namespace kestrova
