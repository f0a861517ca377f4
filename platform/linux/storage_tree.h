// The tree of a compound file in memory: storages with their elements in the format's order, and streams, whose bytes
// are the file's as far as nobody has written them.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/compound_reader.h"
#include "platform/safe_file.h"

// The content of a stream: chunks of what was written, over what lies in the file.
class StreamContent {
 public:
  StreamContent() = default;
  // A stream of the file. Its chain is looked up by the first Open.
  StreamContent(std::shared_ptr<const CompoundReader> file, DWORD start, ULONGLONG bytes)
      : file_(std::move(file)), start_(start), size_(bytes), file_bytes_(bytes) {}

  ULONGLONG Size() const { return size_; }
  // Has to come ahead of Read, Write and Resize. STG_E_DOCFILECORRUPT if the chain is broken.
  HRESULT Open() const;
  // The range lies within the stream.
  HRESULT Read(ULONGLONG at, void* target, std::size_t bytes) const;
  // Extends the stream as needed. What fails has written nothing.
  HRESULT Write(ULONGLONG at, const void* source, std::size_t bytes);
  HRESULT Resize(ULONGLONG bytes);
  // Appends the whole content to a file that is being written; the writing's own failure shows in the file's status.
  HRESULT CopyTo(SafeFile& file) const;

 private:
  // Above what SafeFile collects, so that a chunk goes straight to the file.
  static constexpr std::size_t kChunk = 128 * 1024;
  // The first bytes of its part of the stream; what follows is zero. Empty: the part is the file's, then zero.
  using Chunk = std::vector<BYTE>;

  HRESULT ReadFromFile(ULONGLONG at, BYTE* target, std::size_t bytes) const;
  HRESULT Materialise(std::size_t index);
  const Chunk* ChunkAt(std::size_t index) const;

  std::shared_ptr<const CompoundReader> file_;
  DWORD start_ = 0;
  ULONGLONG size_ = 0;
  ULONGLONG file_bytes_ = 0;  // from here on nothing is the file's any more
  mutable bool located_ = false;
  mutable std::vector<FileRun> runs_;
  std::vector<Chunk> chunks_;
};

struct StorageNode;

// The order of a storage's elements in the file: by length, then by upper case.
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
  bool is_open = false;  // an object stands on it
  bool is_gone = false;  // destroyed or reverted: whoever still holds it finds nothing
  int depth = 0;
  CLSID clsid = {};
  DWORD state_bits = 0;
  FILETIME created = {};
  FILETIME modified = {};
  std::set<std::shared_ptr<StorageNode>, StorageNameOrder> elements;  // of a storage
  StreamContent content;                                              // of a stream

  // Null if there is none of that name.
  std::shared_ptr<StorageNode> Find(std::u16string_view element) const;
  // The node and all below it are gone from now on.
  void MarkGone();
};
