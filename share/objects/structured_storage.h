// StructuredStorage walks through a compound file with nested storages. It keeps the open storages in a stack, with the
// root at the bottom and the current storage on top.
//
// A failed operation returns false and sets the last result; nothing raises and nothing is shown. Names and modes go to
// the platform unchanged (platform/storage.h). One thread uses an object.
#pragma once

#include <string>
#include <vector>

#include "platform/storage.h"

class KVSHARE_API StructuredStorage {
 public:
  StructuredStorage() = default;
  // Releases all storages. Releasing a changed root in direct mode writes it, and a failure is lost: commit the root
  // first.
  virtual ~StructuredStorage();
  StructuredStorage(const StructuredStorage&) = delete;
  StructuredStorage& operator=(const StructuredStorage&) = delete;

  // ---- the file; each operation first closes everything, and leaves nothing open on failure

  bool CreateFileW(LPCWSTR name, unsigned long mode);
  bool OpenFile(LPCWSTR name, unsigned long mode);
  // Makes the storage the root and adds a reference to it. The path stays empty. Null only closes everything.
  void Attach(IStorage* root);
  // Closes everything and returns the root, which the caller releases; null if nothing was open.
  IStorage* Detach();
  // Releases all storages, the current one first. The path becomes empty and the last result 0.
  void CloseAll();

  // ---- below the current storage; they fail with E_POINTER if nothing is open

  // If enter is true, the new storage becomes the current one.
  bool CreateStorage(LPCWSTR name, bool enter, unsigned long mode);
  // The opened storage becomes the current one.
  bool OpenStorage(LPCWSTR name, unsigned long mode);
  // Releases the current storage; the one above becomes current. False for the root, which stays open, and if nothing
  // is open; the last result does not change.
  bool CloseStorage();
  bool Destroy(LPCWSTR name);
  // The caller releases the stream. *out is null after a failure.
  bool CreateStream(IStream** out, LPCWSTR name, unsigned long mode);
  // As CreateStream, but if the platform's call fails, *out is what that call left there.
  bool OpenStream(IStream** out, LPCWSTR name, unsigned long mode);

  // ---- the open storages; owned by this object, null if not open

  IStorage* GetCurrentStorage() const;
  IStorage* GetRootStorage() const;
  // 0 is the root.
  IStorage* GetStorage(std::size_t depth) const;
  // The name that CreateFileW or OpenFile received; otherwise empty.
  const std::basic_string<WCHAR>& GetFullPath() const { return m_fullPath; }
  // The names of the open storages from the root on, each followed by "|"; empty if nothing is open.
  std::basic_string<WCHAR> GetCurrentPath() const;
  // The result of the last platform call; 0 after CloseAll.
  HRESULT GetLastResult() const { return m_lastResult; }

 private:
  bool SetResult(HRESULT result);
  void Enter(IStorage* storage);
  bool EnterRoot(LPCWSTR name, IStorage* root);

  std::basic_string<WCHAR> m_fullPath;
  std::vector<IStorage*> m_storages;
  HRESULT m_lastResult = 0;
};
