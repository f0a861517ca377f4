#include "platform/answers.h"

namespace {

constexpr std::string_view kArrow = " -> ";

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") + 1 - first);
}

// The part up to the separator, which leaves the text with it.
std::string_view TakePart(std::string_view& text, char separator) {
  const std::size_t end = text.find(separator);
  const std::string_view part = text.substr(0, end);
  text.remove_prefix(end == text.npos ? text.size() : end + 1);
  return part;
}

// Empty if the line is correct.
std::string ParseLine(std::string_view line, BoxAnswer& answer) {
  const std::size_t arrow = line.rfind(kArrow);
  if (arrow == line.npos) return "there is no \" -> \" between the expected text and what to press";
  answer.expected = Trimmed(line.substr(0, arrow));
  if (answer.expected.empty()) return "the expected text is missing; write * for any";
  std::string_view names = line.substr(arrow + kArrow.size());
  do {
    const std::string_view name = Trimmed(TakePart(names, ','));
    if (name.empty()) return "the name of a button is missing";
    answer.presses.emplace_back(name);
  } while (!names.empty());
  return {};
}

}  // namespace

BoxAnswers ParseBoxAnswers(std::string_view text) {
  BoxAnswers result;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  for (int number = 1; !text.empty(); ++number) {
    const std::string_view line = Trimmed(TakePart(text, '\n'));
    if (line.empty() || line.front() == '#') continue;
    BoxAnswer answer;
    answer.line = number;
    result.error = ParseLine(line, answer);
    result.error_line = number;
    if (!result.error.empty()) return result;
    result.answers.push_back(std::move(answer));
  }
  return result;
}

// Goes back to the last "*" on a difference, so the time is at most the product of the lengths.
bool FitsPattern(std::string_view pattern, std::string_view text) {
  std::size_t p = 0, t = 0, star = pattern.npos, retry = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      retry = t;
    } else if (p < pattern.size() && pattern[p] == text[t]) {
      ++p;
      ++t;
    } else if (star != pattern.npos) {
      p = star + 1;
      t = ++retry;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}
