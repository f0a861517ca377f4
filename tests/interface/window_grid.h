// A grid for tests, with a window.
#pragma once

#include <string>
#include <vector>

#include "companions/grid/grid_core.h"
#include "framework/rectangle.h"

namespace kvtest {

// A grid in a window whose upper left corner is at 100, 200.
class WindowGrid : public CGXGridCore {
 public:
  explicit WindowGrid(const std::vector<const char*>& headers, LONG rows = 0) {
    InsertRows(1, rows);
    InsertColumns(1, LONG(headers.size()));
    for (std::size_t i = 0; i < headers.size(); ++i) SetCellText(0, LONG(i) + 1, CString(headers[i]).View());
  }
  bool ClientToScreen(CPoint& point) const override {
    point.Offset(100, 200);
    return true;
  }
  // "b a:120 (c)": in order, with widths other than the default, hidden ones in brackets.
  std::string Columns() const {
    std::string text;
    for (LONG column = 1; column <= GetColumnCount(); ++column) {
      std::string name = ToUtf8(GetCellText(0, column));
      if (GetColumnWidth(column) != kGridColumnWidth) name += ":" + std::to_string(GetColumnWidth(column));
      text += (text.empty() ? "" : " ") + (IsColumnHidden(column) ? "(" + name + ")" : name);
    }
    return text;
  }
};

}  // namespace kvtest
