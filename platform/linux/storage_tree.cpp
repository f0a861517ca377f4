#include "platform/linux/storage_tree.h"

#include <algorithm>
#include <cstring>

#include "platform/linux/compound_format.h"
#include "platform/linux/letter_case.h"

// ---- content

HRESULT StreamContent::Open() const {
  if (located_ || file_bytes_ == 0) return S_OK;
  const HRESULT result = file_->Locate(start_, file_bytes_, runs_);
  located_ = SUCCEEDED(result);
  return result;
}

const StreamContent::Chunk* StreamContent::ChunkAt(std::size_t index) const {
  return index < chunks_.size() && !chunks_[index].empty() ? &chunks_[index] : nullptr;
}

// Reads bytes from the file, and zeros after the file's part.
HRESULT StreamContent::ReadFromFile(ULONGLONG at, BYTE* target, std::size_t bytes) const {
  const ULONGLONG behind = std::min(std::max(file_bytes_, at), at + bytes);
  std::memset(target + (behind - at), 0, std::size_t(at + bytes - behind));
  if (behind == at) return S_OK;
  auto run = std::upper_bound(runs_.begin(), runs_.end(), at,
                              [](ULONGLONG offset, const FileRun& r) { return offset < r.stream_offset; });
  for (--run; at < behind; ++run) {
    const ULONGLONG skipped = at - run->stream_offset;
    const std::size_t part = std::size_t(std::min(behind - at, run->bytes - skipped));
    if (const HRESULT result = file_->ReadAt(run->file_offset + skipped, target, part); FAILED(result)) return result;
    target += part;
    at += part;
  }
  return S_OK;
}

HRESULT StreamContent::Read(ULONGLONG at, void* target, std::size_t bytes) const {
  BYTE* to = static_cast<BYTE*>(target);
  while (bytes > 0) {
    const std::size_t offset = std::size_t(at % kChunk);
    const std::size_t part = std::min(bytes, kChunk - offset);
    if (const Chunk* chunk = ChunkAt(std::size_t(at / kChunk))) {
      const std::size_t held = std::min(part, std::max(chunk->size(), offset) - offset);
      std::memcpy(to, chunk->data() + offset, held);
      std::memset(to + held, 0, part - held);
    } else if (const HRESULT result = ReadFromFile(at, to, part); FAILED(result)) {
      return result;
    }
    to += part;
    at += part;
    bytes -= part;
  }
  return S_OK;
}

// Creates the chunk in memory with the file's bytes.
HRESULT StreamContent::LoadChunk(std::size_t index) {
  if (index >= chunks_.size()) chunks_.resize(index + 1);
  Chunk& chunk = chunks_[index];
  if (!chunk.empty()) return S_OK;
  if (index > 0) chunk.reserve(kChunk);  // a small stream has one chunk, which grows on demand
  const ULONGLONG start = ULONGLONG(index) * kChunk;
  if (start >= file_bytes_) return S_OK;
  chunk.resize(std::size_t(std::min<ULONGLONG>(kChunk, file_bytes_ - start)));
  const HRESULT result = ReadFromFile(start, chunk.data(), chunk.size());
  if (FAILED(result)) chunk = Chunk();
  return result;
}

HRESULT StreamContent::Write(ULONGLONG at, const void* source, std::size_t bytes) {
  if (at > compound::kMaxFileBytes || bytes > compound::kMaxFileBytes - at) return STG_E_MEDIUMFULL;
  const BYTE* from = static_cast<const BYTE*>(source);
  const ULONGLONG end = at + bytes;
  // Load the partly overwritten chunks at both ends first, because reading the file can fail.
  for (const ULONGLONG edge : {at, end}) {
    if (bytes == 0 || edge % kChunk == 0 || edge / kChunk * kChunk >= file_bytes_) continue;
    if (const HRESULT result = LoadChunk(std::size_t(edge / kChunk)); FAILED(result)) return result;
  }
  while (at < end) {
    const std::size_t offset = std::size_t(at % kChunk);
    const std::size_t part = std::size_t(std::min<ULONGLONG>(end - at, kChunk - offset));
    const std::size_t index = std::size_t(at / kChunk);
    if (index >= chunks_.size()) chunks_.resize(index + 1);
    Chunk& chunk = chunks_[index];
    if (index > 0 && chunk.empty()) chunk.reserve(kChunk);
    const std::size_t behind = offset + part;
    if (chunk.size() < offset) chunk.resize(offset);
    const std::size_t over = std::min(chunk.size(), behind) - offset;
    if (over != 0) std::memcpy(chunk.data() + offset, from, over);  // an empty chunk has a null address
    chunk.insert(chunk.end(), from + over, from + part);
    from += part;
    at += part;
    size_ = std::max(size_, at);
  }
  return S_OK;
}

HRESULT StreamContent::Resize(ULONGLONG bytes) {
  if (bytes > compound::kMaxFileBytes) return STG_E_MEDIUMFULL;
  file_bytes_ = std::min(file_bytes_, bytes);
  const std::size_t chunks = std::size_t((bytes + kChunk - 1) / kChunk);
  if (chunks < chunks_.size()) chunks_.resize(chunks);
  if (!chunks_.empty() && chunks_.size() == chunks) {
    const std::size_t rest = std::size_t(bytes - ULONGLONG(chunks - 1) * kChunk);
    if (chunks_.back().size() > rest) chunks_.back().resize(rest);
  }
  size_ = bytes;
  return S_OK;
}

HRESULT StreamContent::CopyTo(SafeFile& file) const {
  if (const HRESULT result = Open(); FAILED(result)) return result;
  std::vector<BYTE> buffer;
  for (ULONGLONG at = 0; at < size_ && file.FirstError() == ERROR_SUCCESS; at += kChunk) {
    const std::size_t part = std::size_t(std::min<ULONGLONG>(kChunk, size_ - at));
    const Chunk* const chunk = ChunkAt(std::size_t(at / kChunk));
    if (chunk && chunk->size() == part) {
      file.Write(chunk->data(), part);
      continue;
    }
    buffer.resize(kChunk);
    if (const HRESULT result = Read(at, buffer.data(), part); FAILED(result)) return result;
    file.Write(buffer.data(), part);
  }
  return S_OK;
}

// ---- names and nodes

bool StorageNameOrder::operator()(std::u16string_view a, std::u16string_view b) const {
  if (a.size() != b.size()) return a.size() < b.size();
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] == b[i]) continue;
    const char16_t x = UpperUnit(a[i]), y = UpperUnit(b[i]);
    if (x != y) return x < y;
  }
  return false;
}

bool StorageNameOrder::operator()(const std::shared_ptr<StorageNode>& a, const std::shared_ptr<StorageNode>& b) const {
  return operator()(std::u16string_view(a->name), std::u16string_view(b->name));
}

bool StorageNameOrder::operator()(const std::shared_ptr<StorageNode>& a, std::u16string_view b) const {
  return operator()(std::u16string_view(a->name), b);
}

bool StorageNameOrder::operator()(std::u16string_view a, const std::shared_ptr<StorageNode>& b) const {
  return operator()(a, std::u16string_view(b->name));
}

std::shared_ptr<StorageNode> StorageNode::Find(std::u16string_view element) const {
  const auto found = elements.find(element);
  return found == elements.end() ? nullptr : *found;
}

void StorageNode::MarkGone() {
  is_gone = true;
  for (const auto& element : elements) element->MarkGone();
}
