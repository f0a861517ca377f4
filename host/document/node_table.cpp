#include "host/document/node_table.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "framework/archive.h"
#include "host/document/document_file.h"
#include "host/document/host_document.h"

namespace kestrova {
namespace {

constexpr WORD kNewClassTag = 0xFFFF;
constexpr WORD kWideCount = 0xFFFF;
constexpr WORD kClassBit = 0x8000;
constexpr WORD kBigTag = 0x7FFF;
constexpr std::size_t kHeadBytes = 3 * sizeof(WORD);  // of a class record, before the name
constexpr std::size_t kLongestName = 63;
constexpr int kMostCandidates = 16;  // searched for a table; an intact table is the first one

// True if the bytes begin with the record of a class of nodes.
bool StartsWithNodeClass(std::string_view bytes) {
  WORD head[3];
  if (bytes.size() < kHeadBytes) return false;
  std::memcpy(head, bytes.data(), kHeadBytes);
  if (head[0] != kNewClassTag || head[2] > kLongestName || bytes.size() < kHeadBytes + head[2]) return false;
  const CRuntimeClass* record = CRuntimeClass::FromName(bytes.data() + kHeadBytes, head[2]);
  return record && record->IsDerivedFrom(RUNTIME_CLASS(HostNode));
}

// Reads the table at the position: the count, a WORD or with `wide` FF FF and a DWORD, and the rows. Returns the number
// of the first class, which the first node's record begins with; 0 for another count and for damaged rows.
DWORD FirstNumberOf(CFile& file, ULONGLONG start, bool wide) {
  file.Seek(LONGLONG(start), CFile::begin);
  CArchive ar(&file, CArchive::load | CArchive::bNoFlushOnDelete, BufferBytesFor(file));
  WORD tag = 0;
  ar >> tag;
  if ((tag == kWideCount) != wide) return 0;
  DWORD count = tag;
  if (wide) ar >> count;
  ar.EnsureLeft(count, sizeof tag);
  for (DWORD left = count; left > 0; --left) {
    ar >> tag;
    if (tag == kNewClassTag) {
      WORD head[2] = {};
      char name[kLongestName];
      ar.EnsureRead(head, sizeof head);
      if (head[1] > sizeof name) return 0;
      ar.EnsureRead(name, head[1]);
      if (!CRuntimeClass::FromName(name, head[1])) return 0;
    } else if (tag == kBigTag) {
      DWORD number = 0;
      ar >> number;
    } else if ((tag & kClassBit) == 0) {
      return 0;
    }
  }
  ar >> tag;
  return (tag & kClassBit) != 0 && tag != kNewClassTag ? tag & ~DWORD(kClassBit) : 0;
}

// The wide form comes first: its last bytes can be a count, too.
std::optional<NodeTable> TableBefore(CFile& file, ULONGLONG firstRow) {
  for (const bool wide : {true, false}) {
    const std::size_t countBytes = wide ? sizeof(WORD) + sizeof(DWORD) : sizeof(WORD);
    if (firstRow < countBytes) continue;
    try {
      const DWORD number = FirstNumberOf(file, firstRow - countBytes, wide);
      if (number > kNumbersBeforeTable) return NodeTable{firstRow - countBytes, number};
    } catch (const CArchiveException&) {
      // The rows end too early.
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<NodeTable> FindNodeTable(CFile& file) {
  constexpr std::size_t kLongestRecord = kHeadBytes + kLongestName;
  ULONGLONG start = file.GetPosition();  // of the window
  std::string window;
  std::vector<char> piece(std::size_t(BufferBytesFor(file)));
  for (int candidates = 0;;) {
    file.Seek(LONGLONG(start + window.size()), CFile::begin);
    const UINT count = file.Read(piece.data(), UINT(piece.size()));
    window.append(piece.data(), count);
    const std::size_t searched = count == 0 ? window.size() : window.size() - std::min(window.size(), kLongestRecord);
    for (std::size_t at = window.find("\xFF\xFF"); at < searched; at = window.find("\xFF\xFF", at + 1)) {
      if (!StartsWithNodeClass(std::string_view(window).substr(at))) continue;
      if (const auto table = TableBefore(file, start + at)) return table;
      if (++candidates == kMostCandidates) return std::nullopt;
    }
    if (count == 0) return std::nullopt;
    window.erase(0, searched);
    start += searched;
  }
}

// ---- the spliced file

// The record of an empty document ends with the number of its nodes, a WORD.
SplicedFile::SplicedFile(CFile& file, ULONGLONG start) : file_(file), start_(start) {
  const HostDocument empty;
  CMemFile record;
  CArchive ar(&record, CArchive::store);
  ar.WriteObject(&empty);
  ar.Close();
  head_.assign(reinterpret_cast<const char*>(record.GetData()), std::size_t(record.GetLength()) - sizeof(WORD));
}

UINT SplicedFile::Read(void* target, UINT bytes) {
  UINT done = 0;
  if (position_ < head_.size()) {
    done = UINT(std::min<ULONGLONG>(bytes, head_.size() - position_));
    std::memcpy(target, head_.data() + position_, done);
  }
  if (done < bytes) {
    file_.Seek(LONGLONG(OriginOf(position_ + done)), CFile::begin);
    done += file_.Read(static_cast<char*>(target) + done, bytes - done);
  }
  position_ += done;
  return done;
}

ULONGLONG SplicedFile::Seek(LONGLONG offset, UINT from) {
  const ULONGLONG base = from == begin ? 0 : from == end ? GetLength() : position_;
  return position_ = base + ULONGLONG(offset);
}

}  // namespace kestrova
