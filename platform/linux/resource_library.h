// The string tables of a portable executable file in memory.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/types.h"

class ResourceLibrary {
 public:
  // Takes the bytes of a whole file and lists its string blocks; nothing if they are no library.
  static std::optional<ResourceLibrary> Parse(std::vector<std::byte> file);

  // String number id, inside this object's bytes; empty if there is none.
  std::u16string_view FindString(WORD id) const;
  bool HasStrings() const { return !blocks_.empty(); }

 private:
  // A piece of the file.
  struct Piece {
    std::size_t offset = 0;
    std::size_t size = 0;
  };
  struct Section {
    DWORD address = 0;
    Piece raw;
  };
  // Sixteen strings in a row.
  struct Block {
    Piece data;
    LANGID language = 0;
  };

  template <class Number>
  std::optional<Number> Read(std::size_t offset) const;
  bool ReadHeaders(DWORD& resources);
  bool ReadSections(std::size_t table, std::size_t count);
  bool ReadStringBlocks(DWORD resources);
  std::optional<Piece> PieceAt(DWORD address) const;
  template <class Visit>
  bool ForEachEntry(const Piece& root, DWORD directory, Visit visit);

  std::vector<std::byte> file_;
  std::vector<Section> sections_;
  std::map<DWORD, Block> blocks_;
  std::size_t entries_left_ = 0;
};
