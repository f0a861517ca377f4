#include "host/shell/text_table.h"

#include <algorithm>

#include "host/shell/output.h"

namespace kestrova {
namespace {

constexpr std::size_t kGap = 2;

// Every character counts as one column.
std::size_t Width(const std::string& text) {
  return std::size_t(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {
  for (Column& column : columns_) MakeHarmless(column.title);
}

void TextTable::Add(std::vector<std::string> cells) {
  for (std::string& cell : cells) MakeHarmless(cell);
  rows_.push_back(std::move(cells));
}

std::string TextTable::Line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) const {
  std::string line;
  std::size_t due = 0;  // blanks before the next cell that is not empty
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::size_t fill = widths[i] - Width(cells[i]);
    if (columns_[i].right) due += fill;
    if (!cells[i].empty()) {
      line.append(due, ' ').append(cells[i]);
      due = 0;
    }
    if (!columns_[i].right) due += fill;
    if (widths[i] > 0) due += kGap;
  }
  return line + '\n';
}

std::string TextTable::Text() const {
  std::vector<std::string> titles;
  std::vector<std::size_t> widths;
  for (const Column& column : columns_) {
    titles.push_back(column.title);
    widths.push_back(Width(column.title));
  }
  const bool titled =
      std::any_of(titles.begin(), titles.end(), [](const std::string& title) { return !title.empty(); });
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  }
  std::string text = titled ? Line(titles, widths) : std::string();
  for (const auto& row : rows_) text += Line(row, widths);
  return text;
}

}  // namespace kestrova
