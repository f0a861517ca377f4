#include "platform/regular_expression.h"

#include <optional>
#include <regex>

namespace {

constexpr std::size_t kLongest = 2000;  // units of a text: the library's matcher recurses for each one

}  // namespace

struct RegularExpression::Pattern {
  std::optional<std::wregex> compiled;
};

RegularExpression::RegularExpression(TextView pattern, bool matchCase) : pattern_(std::make_unique<Pattern>()) {
  auto flags = std::regex_constants::ECMAScript;
  if (!matchCase) flags |= std::regex_constants::icase;
  try {
    pattern_->compiled.emplace(pattern.data(), pattern.size(), flags);
  } catch (const std::regex_error&) {
    pattern_->compiled.reset();
  }
}

RegularExpression::~RegularExpression() = default;

bool RegularExpression::IsValid() const { return pattern_->compiled.has_value(); }

bool RegularExpression::Matches(TextView text, bool whole) const {
  if (!IsValid() || text.size() > kLongest) return false;
  try {
    return whole ? std::regex_match(text.begin(), text.end(), *pattern_->compiled)
                 : std::regex_search(text.begin(), text.end(), *pattern_->compiled);
  } catch (const std::regex_error&) {
    return false;
  }
}

Text RegularExpression::Replaced(TextView text, TextView by) const {
  if (!IsValid() || text.size() > kLongest) return Text(text);
  try {
    return std::regex_replace(Text(text), *pattern_->compiled, Text(by));
  } catch (const std::regex_error&) {
    return Text(text);
  }
}
