// Reads a developer log line by line, in pieces, because a log may be larger than the memory.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "framework/text.h"
#include "platform/types.h"

namespace kestrova {

inline constexpr std::size_t kMostLineBytes = 4096;  // of a longer line the rest is left out

struct ScopeTimes {
  std::string name;
  ULONGLONG count = 0;
  ULONGLONG total_ms = 0;
  DWORD longest_ms = 0;
};

// The times of scopes by their names, from the lines that a KVTimeLog writes at their ends.
class ScopeTable {
 public:
  // Lines of another form are none of a scope.
  void AddLine(std::string_view line);
  // Those with the longest total time first.
  std::vector<ScopeTimes> Slowest(std::size_t most) const;
  // Lines of scopes that had no place in the table, which has kMostNames names.
  ULONGLONG Uncounted() const { return uncounted_; }

  static constexpr std::size_t kMostNames = 10'000;

 private:
  std::map<std::string, ScopeTimes, std::less<>> scopes_;
  ULONGLONG uncounted_ = 0;
};

// Adds a log's lines to the table and returns the last ones. Throws Failure if the file can't be read.
std::deque<std::string> ReadLog(const CString& path, std::size_t lastLines, ScopeTable& table);

}  // namespace kestrova
