// Reads string tables. These parts of the file are used: the header, which locates the section table and the resources;
// the sections, which map the addresses of a loaded module to file offsets; three directory levels below the resources
// (kind, block, language); and the blocks of sixteen strings, each with a 16-bit length and that many units.
//
// Every offset is checked against the part of the file that must contain it. The levels are walked in loops, so a
// directory that contains itself does no harm. Overlapping directories cannot multiply the work: the number of entries
// is limited to the number of bytes divided by the size of an entry.
#include "platform/linux/resource_library.h"

#include <algorithm>
#include <cstring>

#include "platform/locale.h"

namespace {

constexpr DWORD kDialogKind = 5;
constexpr DWORD kStringKind = 6;
constexpr DWORD kSubdirectory = 0x80000000;
constexpr std::size_t kDirectoryHead = 16;
constexpr std::size_t kDirectoryEntry = 8;
constexpr std::size_t kSectionEntry = 40;
constexpr std::size_t kMaximumSections = 96;  // limit of the format
constexpr int kStringsInABlock = 16;

// The rank of a language; 0 is best.
int RankOf(LANGID language, LANGID users) {
  if (language == 0) return 0;
  if (language == users) return 1;
  return PRIMARYLANGID(language) == PRIMARYLANGID(users) ? 2 : 3;
}

}  // namespace

template <class Number>
std::optional<Number> ResourceLibrary::Read(std::size_t offset) const {
  if (offset > file_.size() || file_.size() - offset < sizeof(Number)) return std::nullopt;
  Number number;
  std::memcpy(&number, file_.data() + offset, sizeof number);
  return number;
}

std::optional<ResourceLibrary> ResourceLibrary::Parse(std::vector<std::byte> file) {
  ResourceLibrary library;
  library.file_ = std::move(file);
  DWORD resources = 0;
  if (!library.ReadHeaders(resources)) return std::nullopt;
  if (resources != 0 && !library.ReadResources(resources)) return std::nullopt;
  return library;
}

// Finds the address of the resources; 0 if there are no resources.
bool ResourceLibrary::ReadHeaders(DWORD& resources) {
  if (Read<WORD>(0) != 0x5A4D) return false;  // "MZ"
  const std::size_t start = Read<DWORD>(0x3C).value_or(0);
  if (Read<DWORD>(start) != 0x4550) return false;  // "PE"
  const std::size_t optional_header = start + 24;
  const auto count = Read<WORD>(start + 6);
  const auto optional_size = Read<WORD>(start + 20);
  const auto magic = Read<WORD>(optional_header);
  if (!count || !optional_size || !magic || (*magic != 0x10B && *magic != 0x20B)) return false;
  if (!ReadSections(optional_header + *optional_size, *count)) return false;
  // The table of directories follows the fields that differ between 32 and 64 bits; the resources are its third entry.
  const std::size_t table = optional_header + (*magic == 0x10B ? 96 : 112);
  const bool has_entry = Read<DWORD>(table - 4).value_or(0) > 2 && table + 24 <= optional_header + *optional_size;
  resources = has_entry ? Read<DWORD>(table + 16).value_or(0) : 0;
  return true;
}

bool ResourceLibrary::ReadSections(std::size_t table, std::size_t count) {
  if (count > kMaximumSections) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = table + i * kSectionEntry;
    const auto address = Read<DWORD>(entry + 12);
    const auto size = Read<DWORD>(entry + 16);
    const auto offset = Read<DWORD>(entry + 20);
    if (!address || !size || !offset) return false;
    const std::size_t start = std::min<std::size_t>(*offset, file_.size());
    sections_.push_back({*address, {start, std::min<std::size_t>(*size, file_.size() - start)}});
  }
  return true;
}

// The part of the file from the address to the end of its section.
std::optional<ResourceLibrary::Piece> ResourceLibrary::PieceAt(DWORD address) const {
  for (const Section& section : sections_) {
    if (address < section.address || address - section.address >= section.raw.size) continue;
    const std::size_t inside = address - section.address;
    return Piece{section.raw.offset + inside, section.raw.size - inside};
  }
  return std::nullopt;
}

// Calls visit(id, target) for each directory entry with a number instead of a name. Returns false if the directory does
// not fit into the root's part, there are too many entries, or visit returns false.
template <class Visit>
bool ResourceLibrary::ForEachEntry(const Piece& root, DWORD directory, Visit visit) {
  if (directory > root.size || root.size - directory < kDirectoryHead) return false;
  const std::size_t head = root.offset + directory;
  const std::size_t named = Read<WORD>(head + 12).value_or(0);
  const std::size_t numbered = Read<WORD>(head + 14).value_or(0);
  const std::size_t count = named + numbered;
  if (count > (root.size - directory - kDirectoryHead) / kDirectoryEntry || count > entries_left_) return false;
  entries_left_ -= count;
  for (std::size_t i = named; i < count; ++i) {
    const std::size_t entry = head + kDirectoryHead + i * kDirectoryEntry;
    const auto id = Read<DWORD>(entry);
    const auto target = Read<DWORD>(entry + 4);
    if (!id || !target || !visit(*id, *target)) return false;
  }
  return true;
}

// Of several languages the best one stays.
void ResourceLibrary::AddBlock(std::map<DWORD, Block>& blocks, DWORD number, const Block& found) {
  const auto [at, isNew] = blocks.try_emplace(number, found);
  if (isNew) return;
  const LANGID users = GetUserDefaultLangID();
  if (RankOf(found.language, users) < RankOf(at->second.language, users)) at->second = found;
}

bool ResourceLibrary::ReadResources(DWORD resources) {
  const auto root = PieceAt(resources);
  if (!root) return false;
  entries_left_ = root->size / kDirectoryEntry;
  const auto add = [&](DWORD kind, DWORD number, DWORD language, DWORD target) {
    if ((target & kSubdirectory) != 0 || target > root->size || root->size - target < 16) return false;
    const std::size_t leaf = root->offset + target;
    const auto data = PieceAt(Read<DWORD>(leaf).value_or(0));
    const std::size_t size = Read<DWORD>(leaf + 4).value_or(0);
    // Units must be aligned, as resource compilers write them, so that texts can be returned without a copy.
    if (!data || size > data->size || data->offset % sizeof(char16_t) != 0) return false;
    AddBlock(kind == kStringKind ? blocks_ : dialogs_, number, {{data->offset, size}, LANGID(language)});
    return true;
  };
  return ForEachEntry(*root, 0, [&](DWORD kind, DWORD numbers) {
    if (kind != kStringKind && kind != kDialogKind) return true;
    if ((numbers & kSubdirectory) == 0) return false;
    return ForEachEntry(*root, numbers & ~kSubdirectory, [&](DWORD number, DWORD languages) {
      if ((languages & kSubdirectory) == 0) return false;
      return ForEachEntry(*root, languages & ~kSubdirectory,
                          [&](DWORD language, DWORD target) { return add(kind, number, language, target); });
    });
  });
}

std::span<const std::byte> ResourceLibrary::FindDialog(WORD id) const {
  const auto found = dialogs_.find(id);
  if (found == dialogs_.end()) return {};
  return std::span(file_).subspan(found->second.data.offset, found->second.data.size);
}

std::u16string_view ResourceLibrary::FindString(WORD id) const {
  const auto found = blocks_.find(DWORD(id / kStringsInABlock) + 1);
  if (found == blocks_.end()) return {};
  std::size_t at = found->second.data.offset;
  const std::size_t end = at + found->second.data.size;
  for (int skip = id % kStringsInABlock;; --skip) {
    if (end - at < sizeof(WORD)) return {};
    const std::size_t length = Read<WORD>(at).value_or(0);
    at += sizeof(WORD);
    if ((end - at) / sizeof(char16_t) < length) return {};
    if (skip == 0) return {reinterpret_cast<const char16_t*>(file_.data() + at), length};
    at += length * sizeof(char16_t);
  }
}
