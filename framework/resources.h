// The application's list of resource modules, in which CString::LoadString looks up strings by number.
//
// An extension library registers itself by creating a CDynLinkLibrary on the heap and never deletes it; it stays in the
// list to the end of the process. The library that was registered last is searched first. Any thread may register and
// look up.
#pragma once

#include "framework/text.h"

class KVSHARE_API CDynLinkLibrary {
 public:
  // Registers the module. `resource` is the module with its strings; it may be null and may be set later.
  explicit CDynLinkLibrary(HINSTANCE module, HINSTANCE resource = nullptr);
  ~CDynLinkLibrary();
  CDynLinkLibrary(const CDynLinkLibrary&) = delete;
  CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;

  HINSTANCE m_hModule;
  HINSTANCE m_hResource;
};

// The number of registered modules.
KVSHARE_API int GetDynLinkLibraryCount();

// The registered module that has the resource (platform/resources.h), searched in the same order; null if none has it.
KVSHARE_API HINSTANCE AfxFindResourceHandle(LPCTSTR name, LPCTSTR kind);

// Both set the text and return true; if there is no such number, the text is empty and the result false.
KVSHARE_API bool LoadStringFromModule(HINSTANCE module, UINT id, CString& text);
KVSHARE_API bool LoadStringFromChain(UINT id, CString& text);
