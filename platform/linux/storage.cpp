// Storage objects, which refer to nodes of a tree in memory.
#include "platform/storage.h"

#include <cstdlib>

#include "platform/linux/compound_format.h"
#include "platform/linux/compound_writer.h"
#include "platform/linux/file_system.h"
#include "platform/linux/storage_document.h"
#include "platform/paths.h"

namespace {

class Storage final : public NodeObject<IStorage> {
 public:
  Storage(std::shared_ptr<StorageDocument> document, std::shared_ptr<StorageNode> node, DWORD mode)
      : NodeObject(std::move(document), std::move(node), mode), is_root_(node_ == document_->root) {}

  HRESULT CreateStream(LPCWSTR name, DWORD mode, DWORD reserved1, DWORD reserved2, IStream** stream) override {
    std::shared_ptr<StorageNode> made;
    const HRESULT result = Create(name, mode, reserved1 | reserved2, /*is_storage=*/false, stream, made);
    return SUCCEEDED(result) ? NewStream(std::move(made), mode, stream) : result;
  }
  HRESULT OpenStream(LPCWSTR name, void* reserved1, DWORD mode, DWORD reserved2, IStream** stream) override {
    std::shared_ptr<StorageNode> found;
    const bool reserved = reserved1 || reserved2 != 0;
    const HRESULT result = Find(name, mode, reserved, /*is_storage=*/false, stream, found);
    return SUCCEEDED(result) ? NewStream(std::move(found), mode, stream) : result;
  }
  HRESULT CreateStorage(LPCWSTR name, DWORD mode, DWORD reserved1, DWORD reserved2, IStorage** storage) override {
    std::shared_ptr<StorageNode> made;
    const HRESULT result = Create(name, mode, reserved1 | reserved2, /*is_storage=*/true, storage, made);
    return SUCCEEDED(result) ? NewStorage(std::move(made), mode, storage) : result;
  }
  HRESULT OpenStorage(LPCWSTR name, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                      IStorage** storage) override {
    std::shared_ptr<StorageNode> found;
    const bool more = priority || exclude || reserved != 0;
    const HRESULT result = Find(name, mode, more, /*is_storage=*/true, storage, found);
    return SUCCEEDED(result) ? NewStorage(std::move(found), mode, storage) : result;
  }

  HRESULT Commit(DWORD flags) override;
  HRESULT DestroyElement(LPCWSTR name) override;
  HRESULT Stat(STATSTG* facts, DWORD flags) override {
    return StatAs(facts, flags, is_root_ ? document_->path : node_->name);
  }

 private:
  // Releasing a direct root writes the file and ignores failures: commit before to see them.
  ~Storage() override {
    if (!is_root_ || node_->is_gone) return;
    const bool direct = (document_->mode & STGM_TRANSACTED) == 0;
    if (direct && document_->changed) Guarded([&] { return document_->Save(); });
    node_->MarkGone();
  }

  template <class Out>
  HRESULT CheckCall(LPCWSTR name, DWORD mode, bool reserved, Out** out) const {
    if (!out) return STG_E_INVALIDPOINTER;
    *out = nullptr;
    if (node_->is_gone) return STG_E_REVERTED;
    if (reserved) return STG_E_INVALIDPARAMETER;
    const HRESULT result = CheckElementName(name);
    return SUCCEEDED(result) ? CheckElementMode(mode, mode_) : result;
  }
  template <class Out>
  HRESULT Create(LPCWSTR name, DWORD mode, bool reserved, bool is_storage, Out** out,
                 std::shared_ptr<StorageNode>& made);
  template <class Out>
  HRESULT Find(LPCWSTR name, DWORD mode, bool reserved, bool is_storage, Out** out,
               std::shared_ptr<StorageNode>& found) const;
  HRESULT NewStream(std::shared_ptr<StorageNode> node, DWORD mode, IStream** stream) const;
  HRESULT NewStorage(std::shared_ptr<StorageNode> node, DWORD mode, IStorage** storage) const;
  void Remove(const std::shared_ptr<StorageNode>& element);

  const bool is_root_;
};

// ---- elements

template <class Out>
HRESULT Storage::Create(LPCWSTR name, DWORD mode, bool reserved, bool is_storage, Out** out,
                        std::shared_ptr<StorageNode>& made) {
  const HRESULT result = CheckCall(name, mode, reserved, out);
  if (FAILED(result)) return result;
  if (!CanWrite(mode_)) return STG_E_ACCESSDENIED;
  if (is_storage && node_->depth >= compound::kMaxDepth) return STG_E_MEDIUMFULL;
  return Guarded([&] {
    const auto there = node_->Find(name);
    if (there && (mode & STGM_CREATE) == 0) return STG_E_FILEALREADYEXISTS;
    made = std::make_shared<StorageNode>();
    made->name = name;
    made->is_storage = is_storage;
    made->depth = node_->depth + 1;
    if (is_storage) made->created = made->modified = StorageTimeNow();
    if (there) Remove(there);
    node_->elements.insert(made);
    document_->changed = true;
    return S_OK;
  });
}

template <class Out>
HRESULT Storage::Find(LPCWSTR name, DWORD mode, bool reserved, bool is_storage, Out** out,
                      std::shared_ptr<StorageNode>& found) const {
  const HRESULT result = CheckCall(name, mode, reserved || (mode & STGM_CREATE) != 0, out);
  if (FAILED(result)) return result;
  found = node_->Find(name);
  if (!found || found->is_storage != is_storage) return STG_E_FILENOTFOUND;
  return found->is_open ? STG_E_ACCESSDENIED : S_OK;
}

HRESULT Storage::NewStream(std::shared_ptr<StorageNode> node, DWORD mode, IStream** stream) const {
  return Guarded([&] {
    const HRESULT result = node->content.Open();
    if (SUCCEEDED(result)) *stream = NewStreamObject(document_, std::move(node), mode & ~STGM_CREATE);
    return result;
  });
}

HRESULT Storage::NewStorage(std::shared_ptr<StorageNode> node, DWORD mode, IStorage** storage) const {
  return Guarded([&] {
    *storage = new Storage(document_, std::move(node), mode & ~STGM_CREATE);
    return S_OK;
  });
}

void Storage::Remove(const std::shared_ptr<StorageNode>& element) {
  element->MarkGone();
  node_->elements.erase(element);
  document_->changed = true;
}

HRESULT Storage::DestroyElement(LPCWSTR name) {
  if (node_->is_gone) return STG_E_REVERTED;
  if (const HRESULT result = CheckElementName(name); FAILED(result)) return result;
  if (!CanWrite(mode_)) return STG_E_ACCESSDENIED;
  const auto element = node_->Find(name);
  if (!element) return STG_E_FILENOTFOUND;
  Remove(element);
  return S_OK;
}

// ---- commit

HRESULT Storage::Commit(DWORD flags) {
  if (node_->is_gone) return STG_E_REVERTED;
  if (flags != STGC_DEFAULT) return STG_E_INVALIDFLAG;
  if (!CanWrite(mode_)) return STG_E_ACCESSDENIED;
  if (!is_root_ || (!document_->changed && document_->has_file)) return S_OK;
  return Guarded([&] { return document_->Save(); });
}

HRESULT NewRoot(std::shared_ptr<StorageDocument> document, IStorage** storage) {
  const DWORD mode = document->mode;
  auto root = document->root;
  *storage = new Storage(std::move(document), std::move(root), mode);
  return S_OK;
}

}  // namespace

// ---- files

HRESULT StgCreateDocfile(LPCWSTR path, DWORD mode, DWORD reserved, IStorage** storage) {
  if (!storage) return STG_E_INVALIDPOINTER;
  *storage = nullptr;
  if (!path || !*path) return STG_E_INVALIDNAME;
  if (reserved != 0) return STG_E_INVALIDPARAMETER;
  if (const HRESULT result = CheckRootMode(mode); FAILED(result)) return result;
  if (!CanWrite(mode)) return STG_E_INVALIDFLAG;
  return Guarded([&] {
    const bool there = _waccess(path, 0) == 0;
    if (there && (mode & STGM_CREATE) == 0) return STG_E_FILEALREADYEXISTS;
    // Starting to write shows whether the file can be written.
    if (const SafeFile probe(path); probe.FirstError() != ERROR_SUCCESS) return StorageCodeOf(probe.FirstError());
    auto document = std::make_shared<StorageDocument>();
    document->path = path;
    document->mode = mode & ~STGM_CREATE;
    document->Clear();
    document->changed = true;
    return NewRoot(std::move(document), storage);
  });
}

HRESULT StgOpenStorage(LPCWSTR path, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved, IStorage** storage) {
  if (!storage) return STG_E_INVALIDPOINTER;
  *storage = nullptr;
  if (!path || !*path) return STG_E_INVALIDNAME;
  if (priority || exclude || reserved != 0) return STG_E_INVALIDPARAMETER;
  if (mode & STGM_CREATE) return STG_E_INVALIDFLAG;
  if (const HRESULT result = CheckRootMode(mode); FAILED(result)) return result;
  return Guarded([&] {
    if (CanWrite(mode) && _waccess(path, 0) == 0 && _waccess(path, 2) != 0) return STG_E_ACCESSDENIED;
    auto document = std::make_shared<StorageDocument>();
    document->path = path;
    document->mode = mode;
    if (const HRESULT result = document->Load(); FAILED(result)) return result;
    return NewRoot(std::move(document), storage);
  });
}

void CoTaskMemFree(void* block) { std::free(block); }
