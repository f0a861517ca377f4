// The units of a document: converts lengths and angles to text for the user and back.
//
// Internal lengths are in metres, angles in radians. Any thread may call these functions; they throw nothing.
#pragma once

#include <string_view>

#include "framework/text.h"

namespace kestrova {

// A length unit of a document.
struct LengthUnit {
  int code;               // the answer to message 206: 0 for millimetres, see IsUnitsMetric
  std::string_view name;  // on the command line
  std::string_view symbol;
  double metres;     // length of one unit
  int decimals;      // the most in a text
  double increment;  // of a spin button, in metres
};

inline constexpr int kMillimetres = 0;
inline constexpr int kInches = 3;

// Null if no unit of a document has the code or name.
const LengthUnit* FindLengthUnit(int code);
const LengthUnit* FindLengthUnit(std::string_view name);

// "12.5mm", "0.4921in", "30deg": without trailing zeros, always with a decimal point.
CString LengthText(double metres, const LengthUnit& unit);
CString AngleText(double radians);
// One degree.
double AngleIncrement();

// Read a text that a user types: a number with a point or one comma, and optionally a unit; blanks are allowed around
// both. Units of a length are mm, cm, m, in, inch, ", ft and '; units of an angle are deg, the degree sign and rad. The
// default is the document's unit, or degrees. For any other text, or a number that is not finite, they return false and
// leave the value unchanged.
bool ParseLength(const CString& text, const LengthUnit& unit, double& metres);
bool ParseAngle(const CString& text, double& radians);

}  // namespace kestrova
