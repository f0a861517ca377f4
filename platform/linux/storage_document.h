// An open compound file, and the checks of modes and names that its objects share.
#pragma once

#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "platform/linux/storage_tree.h"
#include "platform/storage.h"

struct StorageDocument {
  std::u16string path;  // as the caller gave it
  DWORD mode = 0;
  bool has_file = false;  // the tree was read from a file or committed to one
  bool changed = false;
  std::shared_ptr<StorageNode> root;

  // Reads the tree from the file; on failure the old tree stays.
  HRESULT Load();
  // Starts with an empty tree.
  void Clear();
  // Writes the tree to the file.
  HRESULT Save();

 private:
  void Replace(std::shared_ptr<StorageNode> tree);
};

// S_OK, or the failure for an invalid mode. An element's mode must also fit the mode of its storage.
HRESULT CheckRootMode(DWORD mode);
HRESULT CheckElementMode(DWORD mode, DWORD storage_mode);
bool CanWrite(DWORD mode);
HRESULT CheckElementName(LPCWSTR name);

FILETIME StorageTimeNow();
// Returns a copy that the caller frees with CoTaskMemFree.
LPOLESTR CopyForCaller(std::u16string_view text);
// Fills the data of a node. Optional: name.
void FillFacts(const StorageNode& node, LPOLESTR name, DWORD mode, STATSTG* facts);

// Runs a call and converts std::bad_alloc to its result code.
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

// An object for a node; the node counts as open while the object exists.
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

// Creates the stream object of a node whose content is open. The caller owns the only reference.
IStream* NewStreamObject(std::shared_ptr<StorageDocument> document, std::shared_ptr<StorageNode> node, DWORD mode);
