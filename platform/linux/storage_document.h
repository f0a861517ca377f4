// An open compound file and what its objects share: the modes they take, the names, the facts they tell.
#pragma once

#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "platform/linux/storage_tree.h"
#include "platform/storage.h"

struct StorageDocument {
  std::u16string path;  // as it was given
  DWORD mode = 0;
  bool has_file = false;  // a file stands behind the tree: it was read from it, or committed to it
  bool changed = false;
  std::shared_ptr<StorageNode> root;

  // Takes the tree from the file; on failure the old one stays.
  HRESULT Load();
  // Begins with an empty tree.
  void Clear();
  // Writes the tree to the file.
  HRESULT Save();

 private:
  void Replace(std::shared_ptr<StorageNode> tree);
};

// S_OK, or what a call answers to such a mode. An element's also has to fit the mode of the storage that it lies in.
HRESULT CheckRootMode(DWORD mode);
HRESULT CheckElementMode(DWORD mode, DWORD storage_mode, bool is_storage);
bool CanRead(DWORD mode);
bool CanWrite(DWORD mode);
HRESULT CheckElementName(LPCWSTR name);

FILETIME StorageTimeNow();
// A text that the caller frees with CoTaskMemFree.
LPOLESTR CopyForCaller(std::u16string_view text);
// Facts of a node under that name, which may be null.
void FillFacts(const StorageNode& node, LPOLESTR name, DWORD mode, STATSTG* facts);

// Runs a call; memory that is not there becomes its result.
template <class Call>
HRESULT Guarded(Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return STG_E_INSUFFICIENTMEMORY;
  }
}

// Reference counting of an object.
template <class Interface>
class Counted : public Interface {
 public:
  Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  ULONG AddRef() override { return ++references_; }
  ULONG Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~Counted() = default;

 private:
  ULONG references_ = 1;
};

// An object that stands on a node and holds it open.
template <class Interface>
class NodeObject : public Counted<Interface> {
 protected:
  NodeObject(std::shared_ptr<StorageDocument> document, std::shared_ptr<StorageNode> node, DWORD mode)
      : document_(std::move(document)), node_(std::move(node)), mode_(mode) {
    node_->is_open = true;
  }
  ~NodeObject() override { node_->is_open = false; }

  HRESULT StatAs(STATSTG* facts, DWORD flags, std::u16string_view name) const {
    if (!facts) return STG_E_INVALIDPOINTER;
    if (flags > STATFLAG_NONAME) return STG_E_INVALIDFLAG;
    if (node_->is_gone) return STG_E_REVERTED;
    return Guarded([&] {
      FillFacts(*node_, flags == STATFLAG_NONAME ? nullptr : CopyForCaller(name), mode_, facts);
      return S_OK;
    });
  }

  const std::shared_ptr<StorageDocument> document_;
  std::shared_ptr<StorageNode> node_;
  const DWORD mode_;
};

// The stream object on a node, whose content is open. The caller has the only reference.
IStream* NewStreamObject(std::shared_ptr<StorageDocument> document, std::shared_ptr<StorageNode> node, DWORD mode);
