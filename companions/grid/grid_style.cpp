#include "companions/grid/grid_style.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "platform/locale.h"

namespace {

constexpr std::size_t kLongestNumber = 63;
constexpr int kMostDecimals = 15;
constexpr TextView kBlanks = _T(" \t\r\n\v\f");

template <class T>
void Take(std::optional<T>& field, const std::optional<T>& from) {
  if (!field) field = from;
}

bool IsDigit(TCHAR unit) { return unit >= _T('0') && unit <= _T('9'); }

bool IsColor(const CString& text) {
  const TextView view = text.View();
  return view.size() == 7 && view[0] == _T('#') &&
         view.substr(1).find_first_not_of(_T("0123456789ABCDEFabcdef")) == view.npos;
}

bool IsChoice(const CString& text, const CString& choices) {
  return (_T("\n") + choices + _T("\n")).Find(_T("\n") + text + _T("\n")) >= 0 && text.Find(_T('\n')) < 0;
}

}  // namespace

void GridStyle::Inherit(const GridStyle& other) {
  Take(font, other.font);
  Take(font_points, other.font_points);
  Take(bold, other.bold);
  Take(italic, other.italic);
  Take(text_color, other.text_color);
  Take(background, other.background);
  Take(alignment, other.alignment);
  Take(borders, other.borders);
  Take(kind, other.kind);
  Take(read_only, other.read_only);
  Take(choices, other.choices);
  Take(factor, other.factor);
  Take(decimals, other.decimals);
  Take(unit, other.unit);
}

bool ReadGridNumber(TextView text, TCHAR decimalSign, double& value) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return false;
  text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
  if (text.front() == _T('+') && text.size() > 1 && text[1] != _T('-')) text.remove_prefix(1);
  if (text.empty() || text.size() > kLongestNumber) return false;
  char bytes[kLongestNumber];
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool sign = decimalSign != 0 && text[i] == decimalSign;
    if (!sign && text[i] > _T('~')) return false;
    bytes[i] = sign ? '.' : char(text[i]);
  }
  // std::from_chars also reads "inf" and "nan", which are texts here.
  if (!IsDigit(text.back()) && bytes[text.size() - 1] != '.') return false;
  const auto [end, error] = std::from_chars(bytes, bytes + text.size(), value);
  return error == std::errc() && end == bytes + text.size();
}

TCHAR GridDecimalSign() {
  TCHAR sign[8] = {};
  return GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, sign, 8) > 0 ? sign[0] : _T('.');
}

CString GridDisplayText(const CString& text, const GridStyle& style) {
  double value = 0;
  if (style.kind != GridCellKind::kNumber || !(style.decimals || style.factor || style.unit)) return text;
  const TCHAR sign = GridDecimalSign();
  if (!ReadGridNumber(text.View(), sign, value)) return text;
  value *= style.factor.value_or(1);
  CString shown;
  if (style.decimals) {
    shown.Format(_T("%.*f"), std::clamp(*style.decimals, 0, kMostDecimals), value);
  } else {
    shown.Format(_T("%.15g"), value);
  }
  shown.Replace(_T('.'), sign);
  return style.unit && !style.unit->IsEmpty() ? shown + _T(" ") + *style.unit : shown;
}

bool IsValidGridText(const CString& text, const GridStyle& style) {
  double value = 0;
  switch (style.kind.value_or(GridCellKind::kText)) {
    case GridCellKind::kText: return true;
    case GridCellKind::kNumber: return text.IsEmpty() || ReadGridNumber(text.View(), GridDecimalSign(), value);
    case GridCellKind::kCheckBox: return text == _T("0") || text == _T("1");
    case GridCellKind::kList: return IsChoice(text, style.choices.value_or(CString()));
    case GridCellKind::kColor: return IsColor(text);
    case GridCellKind::kButton: return false;
  }
  return false;
}
