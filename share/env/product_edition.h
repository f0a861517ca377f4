// What the running product says of itself where a document is stamped: its edition, and the module in use. Which
// product runs is told in share/env/product_identity.h.
#pragma once

#include "framework/text.h"

// The module that the user works in.
enum KVModule {
  KV_MODULE_UNKNOWN = 0,
  KV_MODULE_MILL = 1,
  KV_MODULE_TURN = 2,
  KV_MODULE_MILL_TURN = 3,
  KV_MODULE_WIRE_EDM = 4,
};

// Where the language library keeps the names of the full product's edition and of the edition Tarnel.
inline constexpr UINT kFullEditionTextId = 2814;
inline constexpr UINT kTarnelEditionTextId = 2815;

// The running edition's name in the user's language; empty if no language library is loaded or it lacks the string.
KVSHARE_API CString GetProductEditionText();
// Further text of the edition: the product's name and version. Empty if the main module gives no description.
KVSHARE_API CString GetProductEditionInfo();

// The main module tells which module runs, on its main thread, whenever that changes; unknown until then. Numbers
// outside KVModule are kept, and have the name of the unknown.
KVSHARE_API void SetRunningModule(int module);
KVSHARE_API int GetRunningModule();
// "Mill", "Turn", "Mill-Turn", "WireEDM" or "Unknown": the same in every language.
KVSHARE_API CString GetRunningModuleName();
