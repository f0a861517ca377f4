// Numbers as a machine definition writes them, read the way the C library's text-to-number routines do it in the C
// locale, whatever locale the process runs in.
//
// Each call reads from the front of the text, skips blanks first, and stops at the first character that it cannot use;
// a text without a number gives 0. The texts are UTF-8. Hexadecimal, infinities and not-a-number are accepted as C
// does. Any thread may call.
#pragma once

#include <cstddef>
#include <string_view>

namespace kvmachine {

// A closed range for every real of a definition.
inline constexpr double kLeastReal = -100000.0;
inline constexpr double kMostReal = 100000.0;

// What was done to a number on the way in.
struct NumberNotes {
  bool none = false;           // there was no number at all
  bool trailing = false;       // something that is no blank stood behind it
  bool commaRepaired = false;  // the first comma was taken for the decimal point
  bool clamped = false;        // it lay outside the range and was moved to its end
};

// A real attribute: the first comma, unless it opens the text, is taken for a decimal point; the result is clamped to
// kLeastReal to kMostReal. Not-a-number passes the clamp.
double ReadReal(std::string_view text, NumberNotes* notes = nullptr);

// An integer attribute; a value out of range is moved to the end of the range of int.
int ReadInteger(std::string_view text, NumberNotes* notes = nullptr);

// Three numbers of one attribute, scanned as "%f %f %f" and "%d %d %d" do it: no comma is repaired, nothing clamped,
// and the scan ends at the first text that is no number. What was not reached is 0. The result is how many were read.
int ScanReals(std::string_view text, float (&out)[3], NumberNotes* notes = nullptr);
int ScanIntegers(std::string_view text, int (&out)[3], NumberNotes* notes = nullptr);

// The routines behind them. used is the number of bytes that belong to blanks and number, 0 if there is no number.
double ToDouble(std::string_view text, std::size_t& used);
float ToFloat(std::string_view text, std::size_t& used);
int ToInteger(std::string_view text, std::size_t& used);

}  // namespace kvmachine
