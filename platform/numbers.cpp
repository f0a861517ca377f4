// Numbers from text on std::from_chars, which knows no locale.
#include "platform/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace {

// Takes leading blanks and the sign off the text; gives whether the sign was a minus.
bool TakeSign(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  return negative;
}

// Whether a decimal number that a double can't hold is too large, and not too small: by the place of its first digit
// that is not 0 and its exponent.
bool IsTooLarge(std::string_view number) {
  const std::size_t exponent_at = std::min(number.find_first_of("eE"), number.size());
  const std::string_view digits = number.substr(0, exponent_at);
  const auto point = static_cast<long long>(std::min(digits.find('.'), digits.size()));
  const auto first = static_cast<long long>(digits.find_first_not_of("0."));
  const std::string_view exponent = number.substr(std::min(exponent_at + 1, number.size()));
  return point - first + IntegerFromUtf8(exponent) > 0;
}

// The part of a wide text that can belong to a number, in single bytes.
std::string NumberPart(LPCWSTR text) {
  std::string part;
  for (; text && *text > 0 && *text < 0x80; ++text) part += static_cast<char>(*text);
  return part;
}

}  // namespace

double NumberFromUtf8(std::string_view text) {
  const bool negative = TakeSign(text);
  if (text.starts_with('-')) return 0;  // the conversion below would take a second sign
  const char* end = text.data() + text.size();
  double value = 0;
  std::from_chars_result result = {};
  if (text.starts_with("0x") || text.starts_with("0X")) {
    if (text.substr(2).starts_with('-')) return 0;
    result = std::from_chars(text.data() + 2, end, value, std::chars_format::hex);
  } else {
    result = std::from_chars(text.data(), end, value);
    if (result.ec == std::errc::result_out_of_range)
      value = IsTooLarge({text.data(), result.ptr}) ? std::numeric_limits<double>::infinity() : 0;
  }
  return negative ? -value : value;
}

int IntegerFromUtf8(std::string_view text) {
  const bool negative = TakeSign(text);
  constexpr long long kLimit = static_cast<long long>(std::numeric_limits<int>::max()) + 1;
  long long value = 0;
  for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1))
    value = std::min(value * 10 + (text.front() - '0'), kLimit);
  return static_cast<int>(negative ? -value : std::min(value, kLimit - 1));
}

#ifndef _WIN32

double _wtof(LPCWSTR text) { return NumberFromUtf8(NumberPart(text)); }

int _wtoi(LPCWSTR text) { return IntegerFromUtf8(NumberPart(text)); }

#endif
