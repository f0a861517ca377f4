// The application's chain of resource modules, in which CString::LoadString looks a number up.
//
// An extension library enters itself by creating a CDynLinkLibrary on the heap; the chain owns it to the end of the
// process. The library entered last is asked first. Entering and looking up may happen on any thread.
#pragma once

#include "framework/text.h"

class KVSHARE_API CDynLinkLibrary {
 public:
  // Enters the module; its resources are those of resource, which may be null and may be set later.
  explicit CDynLinkLibrary(HINSTANCE module, HINSTANCE resource = nullptr);
  ~CDynLinkLibrary();
  CDynLinkLibrary(const CDynLinkLibrary&) = delete;
  CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;

  HINSTANCE m_hModule;
  HINSTANCE m_hResource;
};

// The number of entries in the chain.
KVSHARE_API int GetDynLinkLibraryCount();

// Both empty the text and give false if the number is not found.
KVSHARE_API bool LoadStringFromModule(HINSTANCE module, UINT id, CString& text);
KVSHARE_API bool LoadStringFromChain(UINT id, CString& text);
