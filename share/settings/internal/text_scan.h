// Reads numbers from a text like scanf: skips white space before a number; the first missing number ends the scan. Not
// public.
#pragma once

#include <string_view>

#include "platform/types.h"

class TextScan {
 public:
  explicit TextScan(TextView text) : rest_(text) {}

  // Reads a decimal number, modulo 2^32. False and the value unchanged if there is no number.
  bool Integer(DWORD& value) {
    while (At(0) == ' ' || (At(0) >= '\t' && At(0) <= '\r')) rest_.remove_prefix(1);
    const bool negative = At(0) == '-';
    std::size_t at = negative || At(0) == '+';
    if (!IsDigit(At(at))) return false;
    DWORD number = 0;
    for (; IsDigit(At(at)); ++at) number = number * 10 + DWORD(At(at) - '0');
    rest_.remove_prefix(at);
    value = negative ? 0 - number : number;
    return true;
  }
  bool Integer(LONG& value) {
    auto number = DWORD(value);
    const bool found = Integer(number);
    value = LONG(number);
    return found;
  }

 private:
  TCHAR At(std::size_t i) const { return i < rest_.size() ? rest_[i] : _T('\0'); }
  static bool IsDigit(TCHAR c) { return c >= '0' && c <= '9'; }

  TextView rest_;
};
