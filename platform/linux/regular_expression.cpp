#include "platform/regular_expression.h"

#include <unicode/uregex.h>

namespace {

constexpr int kSteps = 10'000;  // about the milliseconds of a match
constexpr int kStackBytes = 8 << 20;
constexpr std::size_t kLongest = 1 << 24;  // units of a text

struct Close {
  void operator()(URegularExpression* expression) const { uregex_close(expression); }
};

}  // namespace

struct RegularExpression::Pattern {
  std::unique_ptr<URegularExpression, Close> compiled;

  // False if the text is too long.
  bool Use(TextView text, UErrorCode& status) const {
    if (!compiled || text.size() > kLongest) return false;
    uregex_setText(compiled.get(), text.data(), int(text.size()), &status);
    return U_SUCCESS(status);
  }
};

RegularExpression::RegularExpression(TextView pattern, bool matchCase) : pattern_(std::make_unique<Pattern>()) {
  UErrorCode status = U_ZERO_ERROR;
  if (pattern.size() > kLongest) return;
  const std::uint32_t flags = matchCase ? 0 : UREGEX_CASE_INSENSITIVE;
  pattern_->compiled.reset(uregex_open(pattern.data(), int(pattern.size()), flags, nullptr, &status));
  if (U_FAILURE(status)) {
    pattern_->compiled.reset();
    return;
  }
  uregex_setTimeLimit(pattern_->compiled.get(), kSteps, &status);
  uregex_setStackLimit(pattern_->compiled.get(), kStackBytes, &status);
}

RegularExpression::~RegularExpression() = default;

bool RegularExpression::IsValid() const { return pattern_->compiled != nullptr; }

bool RegularExpression::Matches(TextView text, bool whole) const {
  UErrorCode status = U_ZERO_ERROR;
  if (!pattern_->Use(text, status)) return false;
  const UBool found =
      whole ? uregex_matches(pattern_->compiled.get(), 0, &status) : uregex_find(pattern_->compiled.get(), 0, &status);
  return U_SUCCESS(status) && found;
}

Text RegularExpression::Replaced(TextView text, TextView by) const {
  UErrorCode status = U_ZERO_ERROR;
  if (!pattern_->Use(text, status)) return Text(text);
  URegularExpression* const compiled = pattern_->compiled.get();
  const int length = uregex_replaceAll(compiled, by.data(), int(by.size()), nullptr, 0, &status);
  if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) return Text(text);
  Text result(std::size_t(length), TCHAR(0));
  status = U_ZERO_ERROR;
  if (!pattern_->Use(text, status)) return Text(text);
  uregex_replaceAll(compiled, by.data(), int(by.size()), result.data(), length, &status);
  return U_SUCCESS(status) ? result : Text(text);
}
