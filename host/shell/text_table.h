// A table for a terminal: columns as wide as what stands in them, two blanks between.
#pragma once

#include <string>
#include <vector>

namespace kestrova {

// Makes the control characters of a UTF-8 text blanks, from that byte on: what comes from a file must not end a line or
// command the terminal.
void BlankControls(std::string& text, std::size_t from = 0);

class TextTable {
 public:
  struct Column {
    std::string title;
    bool right;  // aligned to the right, as numbers are
  };
  // Titles and cells are UTF-8; control characters in them become blanks.
  explicit TextTable(std::vector<Column> columns);

  // One cell a column.
  void Add(std::vector<std::string> cells);
  // The titles, unless all are empty, then the rows, each a line.
  std::string Text() const;

 private:
  std::string Line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) const;

  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace kestrova
