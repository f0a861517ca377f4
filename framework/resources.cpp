// The list of resource modules.
#include "framework/resources.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "platform/resources.h"

namespace {

struct Chain {
  std::mutex lock;
  std::vector<CDynLinkLibrary*> entries;
};

// Never destroyed, because strings may be looked up after static destructors have begun.
Chain& TheChain() {
  static auto* chain = new Chain;
  return *chain;
}

}  // namespace

CDynLinkLibrary::CDynLinkLibrary(HINSTANCE module, HINSTANCE resource) : m_hModule(module), m_hResource(resource) {
  const std::lock_guard guard(TheChain().lock);
  TheChain().entries.push_back(this);
}

CDynLinkLibrary::~CDynLinkLibrary() {
  const std::lock_guard guard(TheChain().lock);
  std::erase(TheChain().entries, this);
}

int GetDynLinkLibraryCount() {
  const std::lock_guard guard(TheChain().lock);
  return int(TheChain().entries.size());
}

HINSTANCE AfxFindResourceHandle(LPCTSTR name, LPCTSTR kind) {
  const std::lock_guard guard(TheChain().lock);
  const auto& entries = TheChain().entries;
  const auto found = std::find_if(entries.rbegin(), entries.rend(), [&](const CDynLinkLibrary* entry) {
    return entry->m_hResource && FindResourceW(entry->m_hResource, name, kind);
  });
  return found == entries.rend() ? nullptr : (*found)->m_hResource;
}

bool LoadStringFromModule(HINSTANCE module, UINT id, CString& text) {
  LPCWSTR found = nullptr;
  const int length = module ? LoadStringW(module, id, reinterpret_cast<LPWSTR>(&found), 0) : 0;
  text.SetString(found, length);
  return length > 0;
}

bool LoadStringFromChain(UINT id, CString& text) {
  text.Empty();
  const std::lock_guard guard(TheChain().lock);
  const auto& entries = TheChain().entries;
  return std::any_of(entries.rbegin(), entries.rend(),
                     [&](const CDynLinkLibrary* entry) { return LoadStringFromModule(entry->m_hResource, id, text); });
}
