// Reads compound files, which may be damaged or hostile: every sector number, chain, size and directory link is checked
// before it is used, and nothing larger than the file is allocated.
#pragma once

#include <memory>
#include <vector>

#include "platform/storage.h"

struct StorageNode;

// A part of a stream that is contiguous in the file.
struct FileRun {
  ULONGLONG stream_offset;
  ULONGLONG file_offset;
  ULONGLONG bytes;
};

// An open compound file. It keeps its old content even if another file is renamed over it.
class CompoundReader {
 public:
  // Opens the file and reads its tables; returns an STG_E_ code on failure. The path is a system path.
  static HRESULT Open(const std::string& path, std::shared_ptr<CompoundReader>& reader);
  ~CompoundReader();
  CompoundReader(const CompoundReader&) = delete;
  CompoundReader& operator=(const CompoundReader&) = delete;

  // Builds the tree of all directory entries below `root`. Streams keep a reference to the reader, so `self` must be
  // this reader.
  HRESULT ReadTree(const std::shared_ptr<CompoundReader>& self, StorageNode& root);

  // Finds the runs of a stream of that size. STG_E_DOCFILECORRUPT if its chain is shorter or leaves the table.
  HRESULT Locate(DWORD start, ULONGLONG bytes, std::vector<FileRun>& runs) const;
  // Reads bytes at a file offset; STG_E_DOCFILECORRUPT if the file has fewer.
  HRESULT ReadAt(ULONGLONG file_offset, void* target, std::size_t bytes) const;

 private:
  using Table = std::vector<DWORD>;

  explicit CompoundReader(int descriptor) : descriptor_(descriptor) {}
  HRESULT ReadHeader();
  HRESULT ReadFat(const BYTE* header);
  HRESULT ReadMiniFat(const BYTE* header);
  HRESULT ReadChain(DWORD start, ULONGLONG limit, std::vector<BYTE>& bytes) const;
  HRESULT ReadSector(DWORD sector, BYTE* target) const;
  HRESULT ChainRuns(const Table& table, int shift, DWORD start, ULONGLONG bytes, std::vector<FileRun>& runs) const;
  void AddMiniRun(ULONGLONG stream_offset, ULONGLONG mini_offset, ULONGLONG bytes, std::vector<FileRun>& runs) const;
  ULONGLONG SectorOffset(DWORD sector) const { return (ULONGLONG(sector) + 1) << shift_; }

  const int descriptor_;
  int shift_ = 0;
  DWORD sectors_ = 0;
  Table fat_;
  Table mini_fat_;
  DWORD directory_start_ = 0;
  std::vector<FileRun> mini_stream_;
  ULONGLONG mini_bytes_ = 0;
};
