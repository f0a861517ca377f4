// The file's order: header, large streams, the stream of small streams, mini FAT, directory, FAT, DIFAT. Every chain is
// one run of sectors, so all numbers are known before the first byte is written.
#include "platform/linux/compound_writer.h"

#include <algorithm>
#include <vector>

#include "platform/linux/compound_format.h"
#include "platform/linux/storage_tree.h"

using namespace compound;

namespace {

constexpr ULONGLONG kSector = 1 << kSectorShift;
constexpr DWORD kNumbersInSector = DWORD(kSector / 4);
constexpr DWORD kEntriesInSector = DWORD(kSector / kEntryBytes);

DWORD UnitsFor(ULONGLONG bytes, int shift) { return DWORD((bytes + (ULONGLONG(1) << shift) - 1) >> shift); }

// A node and the fields of its directory entry.
struct Entry {
  const StorageNode* node;
  DWORD start = kEndOfChain;
  DWORD units = 0;  // sectors, or mini sectors for a small stream
  DWORD left = kNoEntry;
  DWORD right = kNoEntry;
  DWORD child = kNoEntry;
  BYTE colour = kBlack;

  bool IsSmall() const { return !node->is_storage && node->content.Size() < kMiniCutoff; }
};

class Writer {
 public:
  Writer(LPCWSTR path, const StorageNode& root) : path_(path), root_(root) {}

  HRESULT Write() {
    if (!CollectEntries() || !AssignSectors()) return STG_E_MEDIUMFULL;
    SafeFile file(path_);
    PutHeader(file);
    for (const bool small : {false, true}) {
      if (const HRESULT result = PutStreams(file, small); FAILED(result)) return result;
    }
    PutMiniFat(file);
    PutDirectory(file);
    PutFat(file);
    PutDifat(file);
    if (file.Commit()) return S_OK;
    return file.IsReplaced() ? STG_E_WRITEFAULT : StorageCodeOf(file.FirstError());
  }

 private:
  bool CollectEntries();
  DWORD LinkElements(DWORD first, DWORD count, int level, int levels);
  bool AssignSectors();
  void PutHeader(SafeFile& file) const;
  HRESULT PutStreams(SafeFile& file, bool small) const;
  void PutMiniFat(SafeFile& file) const;
  void PutDirectory(SafeFile& file) const;
  void PutFat(SafeFile& file) const;
  void PutDifat(SafeFile& file) const;

  LPCWSTR path_;
  const StorageNode& root_;
  std::vector<Entry> entries_;
  DWORD mini_units_ = 0, mini_start_ = kEndOfChain, mini_sectors_ = 0;
  DWORD mini_fat_start_ = kEndOfChain, mini_fat_sectors_ = 0;
  DWORD directory_start_ = 0, directory_sectors_ = 0;
  DWORD fat_start_ = 0, fat_sectors_ = 0;
  DWORD difat_start_ = kEndOfChain, difat_sectors_ = 0;
};

// Writes zeros up to the next multiple of the unit.
void Pad(SafeFile& file, ULONGLONG bytes, ULONGLONG unit) {
  static constexpr char kZeros[kSector] = {};
  if (bytes % unit != 0) file.Write(kZeros, std::size_t(unit - bytes % unit));
}

// Collects a table's numbers into sectors.
class TableSink {
 public:
  explicit TableSink(SafeFile& file) : file_(file) {}
  void Put(DWORD number) {
    PutDword(sector_ + 4 * used_, number);
    if (++used_ < kNumbersInSector) return;
    file_.Write(sector_, sizeof sector_);
    used_ = 0;
  }
  // Appends the chain of one run of units.
  void PutChain(DWORD start, DWORD units) {
    for (DWORD i = 1; i < units; ++i) Put(start + i);
    if (units > 0) Put(kEndOfChain);
  }
  void PutMany(DWORD number, DWORD count) {
    for (DWORD i = 0; i < count; ++i) Put(number);
  }
  void Fill(DWORD number) {
    while (used_ != 0) Put(number);
  }

 private:
  SafeFile& file_;
  BYTE sector_[kSector];
  DWORD used_ = 0;
};

// ---- layout

// The elements of each storage are adjacent, in search order.
bool Writer::CollectEntries() {
  entries_.push_back({&root_});
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const auto& elements = entries_[i].node->elements;
    if (elements.empty()) continue;
    const DWORD first = DWORD(entries_.size());
    if (elements.size() > kMaxElements - first) return false;
    for (const auto& element : elements) entries_.push_back({element.get()});
    int levels = 0;
    while (elements.size() >> levels != 0) ++levels;
    entries_[i].child = LinkElements(first, DWORD(elements.size()), 1, levels);
  }
  return true;
}

// Builds a balanced tree from a run of entries and returns its root. Only the lowest level may be incomplete, so only
// that level is red.
DWORD Writer::LinkElements(DWORD first, DWORD count, int level, int levels) {
  if (count == 0) return kNoEntry;
  const DWORD before = count / 2;
  Entry& top = entries_[first + before];
  top.colour = level == levels && levels > 1 ? kRed : kBlack;
  top.left = LinkElements(first, before, level + 1, levels);
  top.right = LinkElements(first + before + 1, count - before - 1, level + 1, levels);
  return first + before;
}

bool Writer::AssignSectors() {
  ULONGLONG bytes = 0;
  for (const Entry& entry : entries_) bytes += entry.node->is_storage ? 0 : entry.node->content.Size() + kSector;
  if (bytes > kMaxFileBytes) return false;
  DWORD next = 0;
  const auto take = [&next](DWORD& start, DWORD units) {
    if (units == 0) return;
    start = next;
    next += units;
  };
  for (Entry& entry : entries_) {
    if (entry.node->is_storage) continue;
    entry.units = UnitsFor(entry.node->content.Size(), entry.IsSmall() ? kMiniShift : kSectorShift);
    if (entry.IsSmall() && entry.units > 0) entry.start = mini_units_;
    if (entry.IsSmall()) mini_units_ += entry.units;
    if (!entry.IsSmall()) take(entry.start, entry.units);
  }
  take(mini_start_, mini_sectors_ = UnitsFor(ULONGLONG(mini_units_) << kMiniShift, kSectorShift));
  take(mini_fat_start_, mini_fat_sectors_ = UnitsFor(ULONGLONG(mini_units_) * 4, kSectorShift));
  take(directory_start_, directory_sectors_ = UnitsFor(entries_.size() * kEntryBytes, kSectorShift));
  fat_start_ = next;
  // The tables contain their own sectors, which may need another sector.
  for (DWORD before = kFree; before != fat_sectors_ + difat_sectors_;) {
    before = fat_sectors_ + difat_sectors_;
    fat_sectors_ = (next + before + kNumbersInSector - 1) / kNumbersInSector;
    const DWORD listed = std::max(fat_sectors_, kHeaderDifat) - kHeaderDifat;
    difat_sectors_ = (listed + kNumbersInSector - 2) / (kNumbersInSector - 1);
  }
  if (difat_sectors_ > 0) difat_start_ = fat_start_ + fat_sectors_;
  return (ULONGLONG(next) + fat_sectors_ + difat_sectors_ + 1) * kSector <= kMaxFileBytes;
}

// ---- output

void Writer::PutHeader(SafeFile& file) const {
  BYTE header[kHeaderBytes] = {};
  std::memcpy(header, kSignature, sizeof kSignature);
  PutWord(header + kMinorVersionAt, 0x3E);
  PutWord(header + kMajorVersionAt, 3);
  PutWord(header + kByteOrderAt, 0xFFFE);
  PutWord(header + kSectorShiftAt, kSectorShift);
  PutWord(header + kMiniShiftAt, kMiniShift);
  PutDword(header + kFatCountAt, fat_sectors_);
  PutDword(header + kDirectoryStartAt, directory_start_);
  PutDword(header + kMiniCutoffAt, kMiniCutoff);
  PutDword(header + kMiniFatStartAt, mini_fat_start_);
  PutDword(header + kMiniFatCountAt, mini_fat_sectors_);
  PutDword(header + kDifatStartAt, difat_start_);
  PutDword(header + kDifatCountAt, difat_sectors_);
  for (DWORD i = 0; i < kHeaderDifat; ++i) {
    PutDword(header + kDifatAt + 4 * i, i < fat_sectors_ ? fat_start_ + i : kFree);
  }
  file.Write(header, sizeof header);
}

HRESULT Writer::PutStreams(SafeFile& file, bool small) const {
  for (const Entry& entry : entries_) {
    if (entry.node->is_storage || entry.IsSmall() != small) continue;
    if (const HRESULT result = entry.node->content.CopyTo(file); FAILED(result)) return result;
    Pad(file, entry.node->content.Size(), ULONGLONG(1) << (small ? kMiniShift : kSectorShift));
  }
  if (small) Pad(file, ULONGLONG(mini_units_) << kMiniShift, kSector);
  return S_OK;
}

void Writer::PutMiniFat(SafeFile& file) const {
  TableSink table(file);
  for (const Entry& entry : entries_)
    if (entry.IsSmall()) table.PutChain(entry.start, entry.units);
  table.Fill(kFree);
}

void PutTime(BYTE* at, const FILETIME& time) {
  PutDword(at, time.dwLowDateTime);
  PutDword(at + 4, time.dwHighDateTime);
}

// A null entry writes a free directory entry.
void PutEntry(SafeFile& file, const Entry* entry, bool is_root, DWORD start, ULONGLONG bytes) {
  BYTE at[kEntryBytes] = {};
  PutDword(at + kLeftAt, entry ? entry->left : kNoEntry);
  PutDword(at + kRightAt, entry ? entry->right : kNoEntry);
  PutDword(at + kChildAt, entry ? entry->child : kNoEntry);
  if (entry) {
    const StorageNode& node = *entry->node;
    const std::u16string_view name = is_root ? std::u16string_view(u"Root Entry") : std::u16string_view(node.name);
    for (std::size_t i = 0; i < name.size(); ++i) PutWord(at + 2 * i, name[i]);
    PutWord(at + kNameBytesAt, WORD(2 * name.size() + 2));
    at[kTypeAt] = is_root ? kTypeRoot : node.is_storage ? kTypeStorage : kTypeStream;
    at[kColourAt] = entry->colour;
    PutDword(at + kClassAt, node.clsid.Data1);
    PutWord(at + kClassAt + 4, node.clsid.Data2);
    PutWord(at + kClassAt + 6, node.clsid.Data3);
    std::memcpy(at + kClassAt + 8, node.clsid.Data4, sizeof node.clsid.Data4);
    PutDword(at + kStateBitsAt, node.state_bits);
    if (!is_root) PutTime(at + kCreatedAt, node.created);  // the format has no creation time for the root
    PutTime(at + kModifiedAt, node.modified);
    PutDword(at + kStartAt, start);
    PutDword(at + kSizeAt, DWORD(bytes));
  }
  file.Write(at, sizeof at);
}

void Writer::PutDirectory(SafeFile& file) const {
  PutEntry(file, &entries_[0], /*is_root=*/true, mini_start_, ULONGLONG(mini_units_) << kMiniShift);
  for (std::size_t i = 1; i < entries_.size(); ++i) {
    const Entry& entry = entries_[i];
    // A storage has no chain; the format demands 0 as its start.
    const DWORD start = entry.node->is_storage ? 0 : entry.start;
    PutEntry(file, &entry, /*is_root=*/false, start, entry.node->is_storage ? 0 : entry.node->content.Size());
  }
  for (std::size_t i = entries_.size(); i % kEntriesInSector != 0; ++i) PutEntry(file, nullptr, false, 0, 0);
}

void Writer::PutFat(SafeFile& file) const {
  TableSink table(file);
  for (const Entry& entry : entries_)
    if (!entry.node->is_storage && !entry.IsSmall()) table.PutChain(entry.start, entry.units);
  table.PutChain(mini_start_, mini_sectors_);
  table.PutChain(mini_fat_start_, mini_fat_sectors_);
  table.PutChain(directory_start_, directory_sectors_);
  table.PutMany(kFatSector, fat_sectors_);
  table.PutMany(kDifatSector, difat_sectors_);
  table.Fill(kFree);
}

// The FAT sectors that are not listed in the header; each index sector ends with the number of the next one.
void Writer::PutDifat(SafeFile& file) const {
  TableSink table(file);
  DWORD listed = kHeaderDifat;
  for (DWORD sector = 0; sector < difat_sectors_; ++sector) {
    for (DWORD i = 0; i + 1 < kNumbersInSector; ++i, ++listed) {
      table.Put(listed < fat_sectors_ ? fat_start_ + listed : kFree);
    }
    table.Put(sector + 1 < difat_sectors_ ? difat_start_ + sector + 1 : kEndOfChain);
  }
}

}  // namespace

HRESULT WriteCompoundFile(LPCWSTR path, const StorageNode& root) { return Writer(path, root).Write(); }

HRESULT StorageCodeOf(LONG status) {
  switch (status) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_ACCESS_DENIED:
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_READ_FAULT:
    case ERROR_DISK_FULL:
    case ERROR_IO_DEVICE: return HRESULT(0x80030000 | DWORD(status));
    case ERROR_FILE_TOO_LARGE: return STG_E_MEDIUMFULL;
    case ERROR_INVALID_NAME: return STG_E_INVALIDNAME;
    default: return STG_E_UNKNOWN;
  }
}
