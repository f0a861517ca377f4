// A table for a terminal: columns as wide as their widest cell, two blanks between them.
#pragma once

#include <string>
#include <vector>

namespace kestrova {

class TextTable {
 public:
  struct Column {
    std::string title;
    bool right;  // right-aligned, as for numbers
  };
  // Titles and cells are UTF-8; they are made harmless, see output.h.
  explicit TextTable(std::vector<Column> columns);

  // One cell per column.
  void Add(std::vector<std::string> cells);
  // One line per row; before them the titles, unless all titles are empty.
  std::string Text() const;

 private:
  std::string Line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) const;

  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace kestrova
