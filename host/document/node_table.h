// Finds the table of nodes in an object archive whose start is damaged, and reads the archive from there: the table
// names the class of each node and so gives the nodes their numbers.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "framework/file.h"

namespace kestrova {

struct NodeTable {
  ULONGLONG start = 0;    // position of the number of nodes in the file
  DWORD firstNumber = 0;  // of the first class in the table
};

// Searches the file from its position on. Nothing for a table without nodes, or one whose rows are damaged, too.
std::optional<NodeTable> FindNodeTable(CFile& file);

// The numbers of the archive before the table: those that the record of an empty document takes.
inline constexpr DWORD kNumbersBeforeTable = 6;

// A file to read: the record of an empty document up to its table of nodes, then the rest of another file from `start`
// on. The other file must outlive it.
class SplicedFile : public CFile {
 public:
  SplicedFile(CFile& file, ULONGLONG start);

  UINT Read(void* target, UINT bytes) override;
  ULONGLONG Seek(LONGLONG offset, UINT from) override;
  ULONGLONG GetPosition() const override { return position_; }
  ULONGLONG GetLength() const override { return head_.size() + file_.GetLength() - start_; }
  // The position in the other file.
  ULONGLONG OriginOf(ULONGLONG position) const {
    return position < head_.size() ? start_ : position - head_.size() + start_;
  }

 private:
  CFile& file_;
  const ULONGLONG start_;
  std::string head_;
  ULONGLONG position_ = 0;
};

}  // namespace kestrova
