// The edition of the running product and the module in use, for the stamps in documents. The product itself is in
// share/env/product_identity.h.
#pragma once

#include "framework/text.h"

// The module that the user works in.
enum KVModule : int {
  KV_MODULE_UNKNOWN = 0,
  KV_MODULE_MILL = 1,
  KV_MODULE_TURN = 2,
  KV_MODULE_MILL_TURN = 3,
  KV_MODULE_WIRE_EDM = 4,
};

// String ids in the language library: the names of the full edition and of the Tarnel edition.
inline constexpr UINT kFullEditionTextId = 2814;
inline constexpr UINT kTarnelEditionTextId = 2815;

// The edition's name in the user's language. Empty if no language library is loaded or it lacks the text.
KVSHARE_API CString GetProductEditionText();
// The product's name and version. Empty if the main module has no ProductInfo.
KVSHARE_API CString GetProductEditionInfo();

// The running module. The main module sets it on its main thread at each change; KV_MODULE_UNKNOWN until then. Numbers
// outside KVModule are stored too; their name is "Unknown".
KVSHARE_API void SetRunningModule(int module);
KVSHARE_API int GetRunningModule();
// "Mill", "Turn", "Mill-Turn", "WireEDM" or "Unknown", in every language.
KVSHARE_API CString GetRunningModuleName();
