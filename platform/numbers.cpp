// Numbers from text with std::from_chars, which does not depend on a locale.
#include "platform/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace {

// Removes leading blanks and the sign from the text. Returns true for a minus sign.
bool ReadSign(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  return negative;
}

// For a number outside the range of double: true if it is too large, false if it is too small. Uses the position of its
// first non-zero digit and its exponent, which counts bits for hexadecimal digits.
bool IsTooLarge(std::string_view number, bool hex) {
  const std::size_t exponent_at = std::min(number.find_first_of(hex ? "pP" : "eE"), number.size());
  const std::string_view digits = number.substr(0, exponent_at);
  const auto point = static_cast<long long>(std::min(digits.find('.'), digits.size()));
  const auto first = static_cast<long long>(digits.find_first_not_of("0."));
  const std::string_view exponent = number.substr(std::min(exponent_at + 1, number.size()));
  return (point - first) * (hex ? 4 : 1) + IntegerFromUtf8(exponent) > 0;
}

}  // namespace

bool ReadNumber(std::string_view text, double& value) {
  const bool negative = ReadSign(text);
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  const std::string_view digits = hex ? text.substr(2) : text;
  double number = 0;
  const char* const end = digits.data() + (digits.starts_with('-') ? 0 : digits.size());  // no second sign
  const auto format = hex ? std::chars_format::hex : std::chars_format::general;
  const std::from_chars_result result = std::from_chars(digits.data(), end, number, format);
  if (result.ec == std::errc::invalid_argument && !hex) return false;  // "0x" without digits is the number 0
  if (result.ec == std::errc::result_out_of_range)
    number = IsTooLarge({digits.data(), result.ptr}, hex) ? std::numeric_limits<double>::infinity() : 0;
  value = negative ? -number : number;
  return true;
}

double NumberFromUtf8(std::string_view text) {
  double value = 0;
  ReadNumber(text, value);
  return value;
}

int IntegerFromUtf8(std::string_view text) {
  const bool negative = ReadSign(text);
  constexpr long long kLimit = static_cast<long long>(std::numeric_limits<int>::max()) + 1;
  long long value = 0;
  for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1))
    value = std::min(value * 10 + (text.front() - '0'), kLimit);
  return static_cast<int>(negative ? -value : std::min(value, kLimit - 1));
}
