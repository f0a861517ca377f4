// The string tables and dialog templates of a portable executable file in memory.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/types.h"

class ResourceLibrary {
 public:
  // Parses the bytes of a whole file; no value if it is not a library.
  static std::optional<ResourceLibrary> Parse(std::vector<std::byte> file);

  // String number `id`, a view of this object's bytes; empty if there is no such string.
  std::u16string_view FindString(WORD id) const;
  // The template of dialog `id`; empty if there is no such dialog.
  std::span<const std::byte> FindDialog(WORD id) const;
  bool HasStrings() const { return !blocks_.empty(); }

 private:
  // A part of the file.
  struct Piece {
    std::size_t offset = 0;
    std::size_t size = 0;
  };
  struct Section {
    DWORD address = 0;
    Piece raw;
  };
  // A block of sixteen strings, or a dialog.
  struct Block {
    Piece data;
    LANGID language = 0;
  };

  template <class Number>
  std::optional<Number> Read(std::size_t offset) const;
  bool ReadHeaders(DWORD& resources);
  bool ReadSections(std::size_t table, std::size_t count);
  bool ReadResources(DWORD resources);
  static void AddBlock(std::map<DWORD, Block>& blocks, DWORD number, const Block& found);
  std::optional<Piece> PieceAt(DWORD address) const;
  template <class Visit>
  bool ForEachEntry(const Piece& root, DWORD directory, Visit visit);

  std::vector<std::byte> file_;
  std::vector<Section> sections_;
  std::map<DWORD, Block> blocks_;
  std::map<DWORD, Block> dialogs_;
  std::size_t entries_left_ = 0;
};
