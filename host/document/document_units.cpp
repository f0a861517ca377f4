#include "host/document/document_units.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <string>

#include "companions/geometry/constants.h"

namespace kestrova {
namespace {

constexpr LengthUnit kUnits[] = {
    {kMillimetres, "mm", "mm", 0.001, 4, 0.001},
    {kInches, "inch", "in", 0.0254, 5, 0.00254},
};

// A unit at the end of a text, and its length in metres or its angle in radians.
struct Suffix {
  std::string_view text;
  double scale;
};
constexpr Suffix kLengthSuffixes[] = {{"mm", 0.001},    {"cm", 0.01},   {"m", 1},       {"in", 0.0254},
                                      {"inch", 0.0254}, {"\"", 0.0254}, {"ft", 0.3048}, {"'", 0.3048}};
constexpr std::string_view kDegreeSign = "\xC2\xB0";
constexpr int kAngleDecimals = 4;
constexpr double kLargestFixed = 1e15;  // larger numbers have an exponent

std::string NumberText(double value, int decimals) {
  if (!(std::abs(value) < kLargestFixed)) return fmt::format("{:g}", value);
  std::string text = fmt::format("{:.{}f}", value, decimals);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool Parse(const CString& text, double scale, std::span<const Suffix> suffixes, double& value) {
  std::string utf8 = ToUtf8(text);
  if (utf8.find('.') == std::string::npos && std::count(utf8.begin(), utf8.end(), ',') == 1) utf8[utf8.find(',')] = '.';
  std::string_view rest = Trimmed(utf8);
  if (rest.starts_with('+') && !rest.starts_with("+-")) rest.remove_prefix(1);  // from_chars refuses it
  double number = 0;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
  if (error != std::errc() || !std::isfinite(number)) return false;
  const std::string_view unit = Trimmed(rest.substr(std::size_t(end - rest.data())));
  if (!unit.empty()) {
    const auto found =
        std::find_if(suffixes.begin(), suffixes.end(), [&](const Suffix& suffix) { return suffix.text == unit; });
    if (found == suffixes.end()) return false;
    scale = found->scale;
  }
  value = number * scale;
  return true;
}

}  // namespace

const LengthUnit* FindLengthUnit(int code) {
  for (const LengthUnit& unit : kUnits)
    if (unit.code == code) return &unit;
  return nullptr;
}

const LengthUnit* FindLengthUnit(std::string_view name) {
  for (const LengthUnit& unit : kUnits)
    if (unit.name == name) return &unit;
  return nullptr;
}

CString LengthText(double metres, const LengthUnit& unit) {
  return FromUtf8(NumberText(metres / unit.metres, unit.decimals).append(unit.symbol));
}

CString AngleText(double radians) { return FromUtf8(NumberText(radians * RADIAN_TO_DEGREE, kAngleDecimals) + "deg"); }

double AngleIncrement() { return 1 / RADIAN_TO_DEGREE; }

bool ParseLength(const CString& text, const LengthUnit& unit, double& metres) {
  return Parse(text, unit.metres, kLengthSuffixes, metres);
}

bool ParseAngle(const CString& text, double& radians) {
  const double degree = 1 / RADIAN_TO_DEGREE;
  const Suffix suffixes[] = {{"deg", degree}, {kDegreeSign, degree}, {"rad", 1}};
  return Parse(text, degree, suffixes, radians);
}

}  // namespace kestrova
