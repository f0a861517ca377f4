// The units of a document: what a length and an angle look like to the user, and back.
//
// The internal unit of lengths is the metre, that of angles the radian: the outside strategy library, which counts in
// millimetres, works in a scale of a thousand to the system's. Any thread may call; nothing fails but by its result.
#pragma once

#include <string_view>

#include "framework/text.h"

namespace kestrova {

// A unit in which a document can have its lengths.
struct LengthUnit {
  int code;               // as messages 205 and 206 tell it: 0 for millimetres, see IsUnitsMetric
  std::string_view name;  // on the command line
  std::string_view symbol;
  double metres;     // in one of the unit
  int decimals;      // at most, in a text
  double increment;  // of a spin button, in metres
};

inline constexpr int kMillimetres = 0;
inline constexpr int kInches = 3;

// Null for a code or name that is no document's unit.
const LengthUnit* FindLengthUnit(int code);
const LengthUnit* FindLengthUnit(std::string_view name);

// "12.5mm", "0.4921in", "30deg": no more decimals than needed, always with a point.
CString LengthText(double metres, const LengthUnit& unit);
CString AngleText(double radians);
// One degree.
double AngleIncrement();

// Read what a user types: a number with a point or one comma, then the unit's symbol or nothing, blanks around either.
// A length may name any of mm, cm, m, in, inch, ", ft and ', an angle deg, the degree sign or rad; without one it is in
// the document's unit, or in degrees. False, with the value left alone, for anything else and for what is not finite.
bool ParseLength(const CString& text, const LengthUnit& unit, double& metres);
bool ParseAngle(const CString& text, double& radians);

}  // namespace kestrova
