// GridStyle: how a cell of a grid looks and what may be entered in it. A style sets any of its fields; a cell takes
// each field from the nearest style that sets it: its own, its row's, its column's, the table's. A field that none of
// them sets has the default stated there.
#pragma once

#include <optional>

#include "framework/text.h"

enum class GridCellKind : BYTE {
  kText,
  kNumber,    // a number, with a point or the user's decimal sign
  kCheckBox,  // "0" or "1"
  kList,      // one of `choices`
  kColor,     // "#RRGGBB"
  kButton,    // the text is the button's; it can't be edited
};

enum class GridAlignment : BYTE { kLeft, kCenter, kRight };

// The sides of a cell that have a line, as bits.
inline constexpr BYTE kGridBorderLeft = 1;
inline constexpr BYTE kGridBorderTop = 2;
inline constexpr BYTE kGridBorderRight = 4;
inline constexpr BYTE kGridBorderBottom = 8;

struct KVSHARE_API GridStyle {
  std::optional<CString> font = {};             // the name; default: the view's
  std::optional<int> font_points = {};          // default: the view's
  std::optional<bool> bold = {}, italic = {};   // default: false
  std::optional<DWORD> text_color = {};         // 0x00BBGGRR; default: the view's
  std::optional<DWORD> background = {};         // likewise
  std::optional<GridAlignment> alignment = {};  // default: left
  std::optional<BYTE> borders = {};             // default: none
  std::optional<GridCellKind> kind = {};        // default: text
  std::optional<bool> read_only = {};           // default: false
  std::optional<CString> choices = {};          // of a list, separated by "\n"; default: none
  // How a number is shown: multiplied by the factor (default 1), with so many decimals from 0 to 15 (default: as it is
  // stored), the user's decimal sign, and a blank and the unit (default: none) after it.
  std::optional<double> factor = {};
  std::optional<int> decimals = {};
  std::optional<CString> unit = {};

  // Sets each field that is not set to that of the other style.
  void Inherit(const GridStyle& other);
  bool operator==(const GridStyle&) const = default;
};

// Reads a number that is the whole text but for blanks around it. The decimal sign is a point, or decimalSign if that
// is not 0.
KVSHARE_API bool ReadGridNumber(TextView text, TCHAR decimalSign, double& value);

// The user's decimal sign.
KVSHARE_API TCHAR GridDecimalSign();

// The cell's text as its style shows it.
KVSHARE_API CString GridDisplayText(const CString& text, const GridStyle& style);

// Whether a user may enter the text in a cell of this style. Whether the cell is read-only does not matter.
KVSHARE_API bool IsValidGridText(const CString& text, const GridStyle& style);
