// The tree of a compound file in memory: storages with their elements in the format's order, and streams, whose
// unwritten bytes are read from the file.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/compound_reader.h"
#include "platform/safe_file.h"

// The content of a stream: written chunks in memory; all other bytes come from the file.
class StreamContent {
 public:
  StreamContent() = default;
  // A stream of the file. The first Open looks up its chain.
  StreamContent(std::shared_ptr<const CompoundReader> file, DWORD start, ULONGLONG bytes)
      : file_(std::move(file)), start_(start), size_(bytes), file_bytes_(bytes) {}

  ULONGLONG Size() const { return size_; }
  // Call it before Read, Write and Resize. STG_E_DOCFILECORRUPT if the chain is damaged.
  HRESULT Open() const;
  // The range must be inside the stream.
  HRESULT Read(ULONGLONG at, void* target, std::size_t bytes) const;
  // Extends the stream as needed. A failed call writes nothing.
  HRESULT Write(ULONGLONG at, const void* source, std::size_t bytes);
  HRESULT Resize(ULONGLONG bytes);
  // Appends the whole content to a file. Failures of writing are in the file's status.
  HRESULT CopyTo(SafeFile& file) const;

 private:
  // Larger than SafeFile's buffer, so that chunks are written directly.
  static constexpr std::size_t kChunk = 128 * 1024;
  // The first bytes of a chunk; the rest is zero. An empty chunk is read from the file and filled with zeros.
  using Chunk = std::vector<BYTE>;

  HRESULT ReadFromFile(ULONGLONG at, BYTE* target, std::size_t bytes) const;
  HRESULT LoadChunk(std::size_t index);
  const Chunk* ChunkAt(std::size_t index) const;

  std::shared_ptr<const CompoundReader> file_;
  DWORD start_ = 0;
  ULONGLONG size_ = 0;
  ULONGLONG file_bytes_ = 0;  // end of the bytes that come from the file
  mutable bool located_ = false;
  mutable std::vector<FileRun> runs_;
  std::vector<Chunk> chunks_;
};

struct StorageNode;

// The order of a storage's elements in the file: by length, then by upper-case name.
struct StorageNameOrder {
  using is_transparent = void;
  bool operator()(std::u16string_view a, std::u16string_view b) const;
  bool operator()(const std::shared_ptr<StorageNode>& a, const std::shared_ptr<StorageNode>& b) const;
  bool operator()(const std::shared_ptr<StorageNode>& a, std::u16string_view b) const;
  bool operator()(std::u16string_view a, const std::shared_ptr<StorageNode>& b) const;
};

struct StorageNode {
  std::u16string name;  // empty for the root
  bool is_storage = false;
  bool is_open = false;  // an object for it exists
  bool is_gone = false;  // destroyed or reverted: its objects return STG_E_REVERTED
  int depth = 0;
  CLSID clsid = {};
  DWORD state_bits = 0;
  FILETIME created = {};
  FILETIME modified = {};
  std::set<std::shared_ptr<StorageNode>, StorageNameOrder> elements;  // for a storage
  StreamContent content;                                              // for a stream

  // Returns null if there is no such element.
  std::shared_ptr<StorageNode> Find(std::u16string_view element) const;
  // Marks the node and all nodes below as gone.
  void MarkGone();
};
