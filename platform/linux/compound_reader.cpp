#include "platform/linux/compound_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "platform/linux/compound_format.h"
#include "platform/linux/compound_writer.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/linux/storage_tree.h"

using namespace compound;

namespace {

// Appends a run; extends the last run if both are adjacent in the file.
void AddRun(ULONGLONG stream_offset, ULONGLONG file_offset, ULONGLONG bytes, std::vector<FileRun>& runs) {
  if (!runs.empty() && runs.back().file_offset + runs.back().bytes == file_offset) {
    runs.back().bytes += bytes;
  } else {
    runs.push_back({stream_offset, file_offset, bytes});
  }
}

FILETIME TimeAt(const BYTE* at) { return {Dword(at), Dword(at + 4)}; }

CLSID ClassAt(const BYTE* at) {
  CLSID id = {Dword(at), Word(at + 4), Word(at + 6), {}};
  std::memcpy(id.Data4, at + 8, sizeof id.Data4);
  return id;
}

// Returns false if the entry's name is not valid for an element.
bool ReadName(const BYTE* entry, std::u16string& name) {
  const WORD bytes = Word(entry + kNameBytesAt);
  if (bytes < 4 || bytes % 2 != 0 || bytes / 2 - 1u > kMaxNameUnits) return false;
  for (int i = 0; i + 2 < bytes; i += 2) name += char16_t(Word(entry + i));
  return name.find(u'\0') == std::u16string::npos;
}

}  // namespace

HRESULT CompoundReader::Open(const std::string& path, std::shared_ptr<CompoundReader>& reader) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (descriptor < 0) {
    FailForPath(errno, path);
    return StorageCodeOf(LONG(GetLastError()));
  }
  reader.reset(new CompoundReader(descriptor));
  const HRESULT result = reader->ReadHeader();
  if (FAILED(result)) reader.reset();
  return result;
}

CompoundReader::~CompoundReader() { close(descriptor_); }

HRESULT CompoundReader::ReadAt(ULONGLONG file_offset, void* target, std::size_t bytes) const {
  for (std::size_t done = 0; done < bytes;) {
    const ssize_t got = pread(descriptor_, static_cast<char*>(target) + done, bytes - done, off_t(file_offset + done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return STG_E_READFAULT;
    if (got == 0) return STG_E_DOCFILECORRUPT;
    done += std::size_t(got);
  }
  return S_OK;
}

// ---- tables

HRESULT CompoundReader::ReadHeader() {
  struct stat facts;
  if (fstat(descriptor_, &facts) != 0) return StorageCodeOf(StatusFromErrno(errno));
  if (!S_ISREG(facts.st_mode)) return STG_E_ACCESSDENIED;
  BYTE header[kHeaderBytes];
  if (facts.st_size < kHeaderBytes) return STG_E_FILEALREADYEXISTS;
  if (const HRESULT result = ReadAt(0, header, sizeof header); FAILED(result)) return result;
  if (std::memcmp(header, kSignature, sizeof kSignature) != 0) return STG_E_FILEALREADYEXISTS;
  shift_ = Word(header + kSectorShiftAt);
  const bool known = shift_ == kSectorShift || shift_ == kBigSectorShift;
  if (!known || Word(header + kMiniShiftAt) != kMiniShift || Dword(header + kMiniCutoffAt) != kMiniCutoff ||
      Word(header + kByteOrderAt) != 0xFFFE || ULONGLONG(facts.st_size) > kMaxFileBytes) {
    return STG_E_DOCFILECORRUPT;
  }
  const ULONGLONG sector = ULONGLONG(1) << shift_;
  const ULONGLONG behind = std::max(ULONGLONG(facts.st_size), sector) - sector;
  sectors_ = DWORD((behind + sector - 1) / sector);
  directory_start_ = Dword(header + kDirectoryStartAt);
  if (const HRESULT result = ReadFat(header); FAILED(result)) return result;
  return ReadMiniFat(header);
}

HRESULT CompoundReader::ReadSector(DWORD sector, BYTE* target) const {
  return sector < sectors_ ? ReadAt(SectorOffset(sector), target, std::size_t(1) << shift_) : STG_E_DOCFILECORRUPT;
}

// Reads table sectors until every sector of the file has an entry; further sectors are ignored.
HRESULT CompoundReader::ReadFat(const BYTE* header) {
  const std::size_t bytes = std::size_t(1) << shift_;
  const DWORD numbers = DWORD(bytes / 4);
  const DWORD listed = Dword(header + kFatCountAt);
  std::vector<BYTE> index(bytes), sector(bytes);
  DWORD next_index = Dword(header + kDifatStartAt);
  for (DWORD i = 0; i < listed && fat_.size() < sectors_; ++i) {
    const DWORD in_index = i < kHeaderDifat ? i : (i - kHeaderDifat) % (numbers - 1);
    if (i >= kHeaderDifat && in_index == 0) {
      if (const HRESULT result = ReadSector(next_index, index.data()); FAILED(result)) return result;
      next_index = Dword(index.data() + bytes - 4);
    }
    const BYTE* const at = i < kHeaderDifat ? header + kDifatAt : index.data();
    if (const HRESULT result = ReadSector(Dword(at + 4 * in_index), sector.data()); FAILED(result)) return result;
    for (DWORD n = 0; n < numbers && fat_.size() < sectors_; ++n) fat_.push_back(Dword(sector.data() + 4 * n));
  }
  return S_OK;
}

HRESULT CompoundReader::ReadMiniFat(const BYTE* header) {
  std::vector<BYTE> bytes;
  const ULONGLONG count = Dword(header + kMiniFatCountAt);
  if (count == 0) return S_OK;
  const HRESULT result = ReadChain(Dword(header + kMiniFatStartAt), count << shift_, bytes);
  mini_fat_.resize(bytes.size() / 4);
  for (std::size_t i = 0; i < mini_fat_.size(); ++i) mini_fat_[i] = Dword(&bytes[4 * i]);
  return result;
}

// Reads a chain of table sectors, at most `limit` bytes; the chain may end earlier.
HRESULT CompoundReader::ReadChain(DWORD start, ULONGLONG limit, std::vector<BYTE>& bytes) const {
  const std::size_t sector_bytes = std::size_t(1) << shift_;
  DWORD steps = 0;
  for (DWORD sector = start; sector != kEndOfChain && bytes.size() < limit; sector = fat_[sector]) {
    if (sector >= fat_.size() || ++steps > sectors_) return STG_E_DOCFILECORRUPT;
    bytes.resize(bytes.size() + sector_bytes);
    if (const HRESULT result = ReadSector(sector, &bytes[bytes.size() - sector_bytes]); FAILED(result)) return result;
  }
  return S_OK;
}

// ---- streams

// Returns the runs of a chain; file offsets count from unit 0. The chain must be exactly as long as the stream, which
// also stops circular chains.
HRESULT CompoundReader::ChainRuns(const Table& table, int shift, DWORD start, ULONGLONG bytes,
                                  std::vector<FileRun>& runs) const {
  const ULONGLONG unit = ULONGLONG(1) << shift;
  if (bytes > table.size() * unit) return STG_E_DOCFILECORRUPT;
  DWORD at = start;
  for (ULONGLONG done = 0; done < bytes; done += unit) {
    if (at >= table.size()) return STG_E_DOCFILECORRUPT;
    AddRun(done, ULONGLONG(at) << shift, std::min(unit, bytes - done), runs);
    at = table[at];
  }
  return S_OK;
}

// Converts a range of the stream of small streams to the file's runs.
void CompoundReader::AddMiniRun(ULONGLONG stream_offset, ULONGLONG mini_offset, ULONGLONG bytes,
                                std::vector<FileRun>& runs) const {
  auto run = std::upper_bound(mini_stream_.begin(), mini_stream_.end(), mini_offset,
                              [](ULONGLONG offset, const FileRun& r) { return offset < r.stream_offset; });
  for (--run; bytes > 0; ++run) {
    const ULONGLONG skipped = mini_offset - run->stream_offset;
    const ULONGLONG part = std::min(bytes, run->bytes - skipped);
    AddRun(stream_offset, run->file_offset + skipped, part, runs);
    stream_offset += part;
    mini_offset += part;
    bytes -= part;
  }
}

HRESULT CompoundReader::Locate(DWORD start, ULONGLONG bytes, std::vector<FileRun>& runs) const {
  runs.clear();
  if (bytes >= kMiniCutoff) {
    const HRESULT result = ChainRuns(fat_, shift_, start, bytes, runs);
    for (FileRun& run : runs) run.file_offset += SectorOffset(0);
    return result;
  }
  std::vector<FileRun> pieces;
  if (const HRESULT result = ChainRuns(mini_fat_, kMiniShift, start, bytes, pieces); FAILED(result)) return result;
  for (const FileRun& piece : pieces) {
    if (piece.file_offset + piece.bytes > mini_bytes_) return STG_E_DOCFILECORRUPT;
    AddMiniRun(piece.stream_offset, piece.file_offset, piece.bytes, runs);
  }
  return S_OK;
}

// ---- directory

HRESULT CompoundReader::ReadTree(const std::shared_ptr<CompoundReader>& self, StorageNode& root) {
  std::vector<BYTE> bytes;
  const ULONGLONG limit = ULONGLONG(kMaxElements) * kEntryBytes;
  if (const HRESULT result = ReadChain(directory_start_, limit + 1, bytes); FAILED(result)) return result;
  const std::size_t entries = bytes.size() / kEntryBytes;
  if (entries == 0 || bytes.size() > limit || bytes[kTypeAt] != kTypeRoot) return STG_E_DOCFILECORRUPT;

  // The root's stream contains the small streams.
  mini_bytes_ = Dword(&bytes[kSizeAt]);
  const DWORD mini_start = Dword(&bytes[kStartAt]);
  const HRESULT located = ChainRuns(fat_, shift_, mini_start, mini_bytes_, mini_stream_);
  if (FAILED(located)) return located;
  for (FileRun& run : mini_stream_) run.file_offset += SectorOffset(0);

  // All streams together must not be larger than the file, so that no sector counts for several streams.
  ULONGLONG room = ULONGLONG(sectors_) << shift_;
  ULONGLONG mini_room = mini_bytes_;
  const auto take = [](ULONGLONG& from, ULONGLONG size) { return size <= from && (from -= size, true); };

  struct Visit {
    DWORD entry;
    StorageNode* parent;
  };
  std::vector<Visit> open;
  std::vector<bool> seen(entries);
  const auto fill = [&](const BYTE* at, StorageNode& node) {
    node.clsid = ClassAt(at + kClassAt);
    node.state_bits = Dword(at + kStateBitsAt);
    node.created = TimeAt(at + kCreatedAt);
    node.modified = TimeAt(at + kModifiedAt);
    if (const DWORD child = Dword(at + kChildAt); child != kNoEntry) open.push_back({child, &node});
  };
  root.is_storage = true;
  fill(bytes.data(), root);
  seen[0] = true;
  while (!open.empty()) {
    const auto [index, parent] = open.back();
    open.pop_back();
    if (index >= entries || seen[index]) return STG_E_DOCFILECORRUPT;
    seen[index] = true;
    const BYTE* const at = &bytes[std::size_t(index) * kEntryBytes];
    auto node = std::make_shared<StorageNode>();
    node->depth = parent->depth + 1;
    if (node->depth > kMaxDepth || !ReadName(at, node->name)) return STG_E_DOCFILECORRUPT;
    if (at[kTypeAt] == kTypeStorage) {
      node->is_storage = true;
      fill(at, *node);
    } else if (at[kTypeAt] == kTypeStream) {
      const DWORD size = Dword(at + kSizeAt);
      if (!take(size < kMiniCutoff ? mini_room : room, size)) return STG_E_DOCFILECORRUPT;
      node->content = StreamContent(self, Dword(at + kStartAt), size);
    } else {
      return STG_E_DOCFILECORRUPT;
    }
    for (const int link : {kLeftAt, kRightAt})
      if (const DWORD next = Dword(at + link); next != kNoEntry) open.push_back({next, parent});
    if (!parent->elements.insert(std::move(node)).second) return STG_E_DOCFILECORRUPT;
  }
  return S_OK;
}
