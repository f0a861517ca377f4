// Reads compound files that anybody may have made: every sector number, chain, size and link of the directory is
// checked before it is followed, and nothing larger than the file is allocated.
#pragma once

#include <memory>
#include <vector>

#include "platform/storage.h"

struct StorageNode;

// A piece of a stream that lies in the file in one piece.
struct FileRun {
  ULONGLONG stream_offset;
  ULONGLONG file_offset;
  ULONGLONG bytes;
};

// An open compound file. It stays readable as it was when another file takes its name.
class CompoundReader {
 public:
  // Opens the file and reads its tables; STG_E_... if that fails. The path is the system's.
  static HRESULT Open(const std::string& path, std::shared_ptr<CompoundReader>& reader);
  ~CompoundReader();
  CompoundReader(const CompoundReader&) = delete;
  CompoundReader& operator=(const CompoundReader&) = delete;

  // Fills the root with everything that the directory holds. Streams keep the reader, which has to be this one.
  HRESULT ReadTree(const std::shared_ptr<CompoundReader>& self, StorageNode& root);

  // Where a stream of that size lies. STG_E_DOCFILECORRUPT if its chain is shorter, or leads out of the table.
  HRESULT Locate(DWORD start, ULONGLONG bytes, std::vector<FileRun>& runs) const;
  // The bytes at an offset of the file; STG_E_DOCFILECORRUPT if the file has fewer.
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
