// Reads the numbers of a machine definition with the rules of the C library's strtod and strtol in the C locale,
// whatever the locale of the process is.
//
// Each function skips blanks, reads a number from the start of the text and stops at the first character that does not
// belong to it. A text without a number gives 0. Texts are UTF-8. Reals may be hexadecimal, infinite or NaN. Any thread
// may call.
#pragma once

#include <cstddef>
#include <string_view>

namespace kvmachine {

// The range of reals in a definition, both ends included.
inline constexpr double kLeastReal = -100000.0;
inline constexpr double kMostReal = 100000.0;

// Remarks on a number, for the check.
struct NumberNotes {
  bool none = false;           // the text has no number
  bool trailing = false;       // the number is followed by other characters than blanks
  bool commaRepaired = false;  // the first comma was read as a decimal point
  bool clamped = false;        // the number was out of range
};

// Reads a real attribute. The first comma is read as a decimal point unless it is the first character. The result is
// clamped to the range above; NaN is not clamped. Null notes are allowed.
double ReadReal(std::string_view text, NumberNotes* notes = nullptr);

// Reads an integer attribute; the result is clamped to the range of int.
int ReadInteger(std::string_view text, NumberNotes* notes = nullptr);

// Read three numbers of one attribute like scanf with "%f %f %f" or "%d %d %d": commas are not repaired and reals not
// clamped. Reading ends at the first text that is not a number; the remaining values are 0. Return how many were read.
int ScanReals(std::string_view text, float (&out)[3], NumberNotes* notes = nullptr);
int ScanIntegers(std::string_view text, int (&out)[3], NumberNotes* notes = nullptr);

// The basic conversions. used is set to the number of bytes of blanks and number; 0 if there is no number.
double ToDouble(std::string_view text, std::size_t& used);
float ToFloat(std::string_view text, std::size_t& used);
int ToInteger(std::string_view text, std::size_t& used);

}  // namespace kvmachine
