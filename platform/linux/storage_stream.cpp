// Stream objects: a position in a node's content.
#include "platform/linux/storage_document.h"

namespace {

class Stream final : public NodeObject<IStream> {
 public:
  Stream(std::shared_ptr<StorageDocument> document, std::shared_ptr<StorageNode> node, DWORD mode)
      : NodeObject(std::move(document), std::move(node), mode) {}

  HRESULT Read(void* target, ULONG bytes, ULONG* read) override {
    if (read) *read = 0;
    if (!target) return STG_E_INVALIDPOINTER;
    if (node_->is_gone) return STG_E_REVERTED;
    const ULONGLONG size = node_->content.Size();
    const ULONG part = position_ < size ? ULONG(std::min<ULONGLONG>(bytes, size - position_)) : 0;
    const HRESULT result = node_->content.Read(position_, target, part);
    if (FAILED(result)) return result;
    position_ += part;
    if (read) *read = part;
    return S_OK;
  }

  HRESULT Write(const void* source, ULONG bytes, ULONG* written) override {
    if (written) *written = 0;
    if (!source) return STG_E_INVALIDPOINTER;
    return Change([&] {
      if (bytes == 0) return S_OK;
      const HRESULT result = node_->content.Write(position_, source, bytes);
      if (FAILED(result)) return result;
      position_ += bytes;
      if (written) *written = bytes;
      return S_OK;
    });
  }

  HRESULT Seek(LARGE_INTEGER distance, DWORD origin, ULARGE_INTEGER* position) override {
    if (node_->is_gone) return STG_E_REVERTED;
    if (origin > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
    const ULONGLONG base = origin == STREAM_SEEK_SET   ? 0
                           : origin == STREAM_SEEK_CUR ? position_
                                                       : node_->content.Size();
    const ULONGLONG to = base + ULONGLONG(distance.QuadPart);  // wraps around for a negative distance
    if (distance.QuadPart < 0 ? to > base : to < base) return STG_E_INVALIDFUNCTION;
    position_ = to;
    if (position) position->QuadPart = to;
    return S_OK;
  }

  HRESULT SetSize(ULARGE_INTEGER bytes) override {
    return Change([&] { return node_->content.Resize(bytes.QuadPart); });
  }

  HRESULT Commit(DWORD) override { return node_->is_gone ? STG_E_REVERTED : S_OK; }
  HRESULT Stat(STATSTG* facts, DWORD flags) override { return StatAs(facts, flags, node_->name); }

 private:
  template <class Call>
  HRESULT Change(Call call) {
    if (node_->is_gone) return STG_E_REVERTED;
    if (!CanWrite(mode_)) return STG_E_ACCESSDENIED;
    document_->changed = true;
    return Guarded(call);
  }

  ULONGLONG position_ = 0;
};

}  // namespace

IStream* NewStreamObject(std::shared_ptr<StorageDocument> document, std::shared_ptr<StorageNode> node, DWORD mode) {
  return new Stream(std::move(document), std::move(node), mode);
}
