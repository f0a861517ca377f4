// StructuredStorage, a walk through a compound file with nested storages: the root at the bottom of a stack, the
// current storage on top. It knows no name of its own; the caller gives each.
//
// Nothing raises and nothing is shown: false and the last result are the whole report. Names and modes are handed on as
// they stand (platform/storage.h). One object belongs to one thread.
#pragma once

#include <string>
#include <vector>

#include "platform/storage.h"

class KVSHARE_API StructuredStorage {
 public:
  StructuredStorage() = default;
  // Releases all storages. A direct root that was changed is written then, and a failure of that is told to nobody:
  // commit the root first.
  virtual ~StructuredStorage();
  StructuredStorage(const StructuredStorage&) = delete;
  StructuredStorage& operator=(const StructuredStorage&) = delete;

  // ---- the file; each closes everything first, and leaves nothing open when it fails

  bool CreateFileW(LPCWSTR name, unsigned long mode);
  bool OpenFile(LPCWSTR name, unsigned long mode);
  // Takes a reference of its own to the storage and makes it the root. The path stays empty. A null only closes.
  void Attach(IStorage* root);
  // Closes everything and hands the root over: the caller releases it. Null if nothing was open.
  IStorage* Detach();
  // Releases all storages, the current one first; the path becomes empty and the last result 0.
  void CloseAll();

  // ---- below the current storage; with nothing open the last result becomes E_POINTER

  // With enter the new storage becomes the current one.
  bool CreateStorage(LPCWSTR name, bool enter, unsigned long mode);
  // The storage becomes the current one.
  bool OpenStorage(LPCWSTR name, unsigned long mode);
  // Leaves the current storage for the one above. False for the root, which stays open, and with nothing open.
  bool CloseStorage();
  bool Destroy(LPCWSTR name);
  // The stream belongs to the caller, who releases it. On any failure *out is null.
  bool CreateStream(IStream** out, LPCWSTR name, unsigned long mode);
  // As CreateStream, but where the open itself fails *out is what the platform makes of it.
  bool OpenStream(IStream** out, LPCWSTR name, unsigned long mode);

  // ---- what is open; storages stay this object's, and are null where there is none

  IStorage* GetCurrentStorage() const;
  IStorage* GetRootStorage() const;
  // 0 is the root.
  IStorage* GetStorage(std::size_t depth) const;
  // The name that CreateFileW or OpenFile was given.
  const std::basic_string<WCHAR>& GetFullPath() const { return m_fullPath; }
  // The names of the open storages from the root up, each with "|" behind; empty with nothing open.
  std::basic_string<WCHAR> GetCurrentPath() const;
  // What the last call of the platform gave.
  HRESULT GetLastResult() const { return m_lastResult; }

 private:
  bool Keep(HRESULT result);
  bool EnterRoot(LPCWSTR name, IStorage* root);

  std::basic_string<WCHAR> m_fullPath;
  std::vector<IStorage*> m_storages;
  HRESULT m_lastResult = 0;
};
