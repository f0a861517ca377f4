#include "share/objects/structured_storage.h"

StructuredStorage::~StructuredStorage() { CloseAll(); }

// Keeps the result as the last one. True for S_OK only.
bool StructuredStorage::SetResult(HRESULT result) {
  m_lastResult = result;
  return result == 0;
}

// ---- the file

// Takes the reference. Without memory it releases the storage and raises.
void StructuredStorage::Enter(IStorage* storage) {
  try {
    m_storages.push_back(storage);
  } catch (...) {
    storage->Release();
    throw;
  }
}

bool StructuredStorage::EnterRoot(LPCWSTR name, IStorage* root) {
  if (m_lastResult != 0) return false;
  Enter(root);
  m_fullPath = name;
  return true;
}

bool StructuredStorage::CreateFileW(LPCWSTR name, unsigned long mode) {
  CloseAll();
  IStorage* root = nullptr;
  SetResult(StgCreateDocfile(name, DWORD(mode), /*reserved=*/0, &root));
  return EnterRoot(name, root);
}

bool StructuredStorage::OpenFile(LPCWSTR name, unsigned long mode) {
  CloseAll();
  IStorage* root = nullptr;
  SetResult(StgOpenStorage(name, /*priority=*/nullptr, DWORD(mode), /*exclude=*/nullptr, /*reserved=*/0, &root));
  return EnterRoot(name, root);
}

void StructuredStorage::Attach(IStorage* root) {
  if (root) root->AddRef();  // before the release: it may be the open root
  CloseAll();
  if (root) m_storages.push_back(root);
}

IStorage* StructuredStorage::Detach() {
  IStorage* const root = GetRootStorage();
  if (root) root->AddRef();
  CloseAll();
  return root;
}

void StructuredStorage::CloseAll() {
  for (; !m_storages.empty(); m_storages.pop_back()) m_storages.back()->Release();
  m_fullPath.clear();
  m_lastResult = 0;
}

// ---- below the current storage

bool StructuredStorage::CreateStorage(LPCWSTR name, bool enter, unsigned long mode) {
  IStorage* const current = GetCurrentStorage();
  if (!current) return SetResult(E_POINTER);
  IStorage* created = nullptr;
  if (!SetResult(current->CreateStorage(name, DWORD(mode), 0, 0, &created))) return false;
  if (enter) {
    Enter(created);
  } else {
    created->Release();
  }
  return true;
}

bool StructuredStorage::OpenStorage(LPCWSTR name, unsigned long mode) {
  IStorage* const current = GetCurrentStorage();
  if (!current) return SetResult(E_POINTER);
  IStorage* opened = nullptr;
  if (!SetResult(current->OpenStorage(name, nullptr, DWORD(mode), nullptr, 0, &opened))) return false;
  Enter(opened);
  return true;
}

bool StructuredStorage::CloseStorage() {
  if (m_storages.size() < 2) return false;
  m_storages.back()->Release();
  m_storages.pop_back();
  return true;
}

bool StructuredStorage::Destroy(LPCWSTR name) {
  IStorage* const current = GetCurrentStorage();
  return SetResult(current ? current->DestroyElement(name) : E_POINTER);
}

bool StructuredStorage::CreateStream(IStream** out, LPCWSTR name, unsigned long mode) {
  IStorage* const current = GetCurrentStorage();
  if (SetResult(current ? current->CreateStream(name, DWORD(mode), 0, 0, out) : E_POINTER)) return true;
  if (out) *out = nullptr;
  return false;
}

bool StructuredStorage::OpenStream(IStream** out, LPCWSTR name, unsigned long mode) {
  IStorage* const current = GetCurrentStorage();
  if (current) return SetResult(current->OpenStream(name, nullptr, DWORD(mode), 0, out));
  if (out) *out = nullptr;
  return SetResult(E_POINTER);
}

// ---- the open storages

IStorage* StructuredStorage::GetCurrentStorage() const { return m_storages.empty() ? nullptr : m_storages.back(); }

IStorage* StructuredStorage::GetRootStorage() const { return GetStorage(0); }

IStorage* StructuredStorage::GetStorage(std::size_t depth) const {
  return depth < m_storages.size() ? m_storages[depth] : nullptr;
}

std::basic_string<WCHAR> StructuredStorage::GetCurrentPath() const {
  std::basic_string<WCHAR> path;
  for (IStorage* storage : m_storages) {
    STATSTG facts = {};
    if (storage->Stat(&facts, STATFLAG_DEFAULT) == 0 && facts.pwcsName) path += facts.pwcsName;
    CoTaskMemFree(facts.pwcsName);
    path += _T('|');
  }
  return path;
}
