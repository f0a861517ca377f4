// Edition and module of the running product.
#include "share/env/product_edition.h"

#include <iterator>

#include "share/env/product_identity.h"

namespace {

// Indexed by KVModule.
constexpr LPCTSTR kModuleNames[] = {_T("Unknown"), _T("Mill"), _T("Turn"), _T("Mill-Turn"), _T("WireEDM")};

int g_runningModule = KV_MODULE_UNKNOWN;

}  // namespace

CString GetProductEditionText() {
  CString text;
  text.LoadString(GetProductType() == KV_PRODUCT_TARNEL ? kTarnelEditionTextId : kFullEditionTextId);
  return text;
}

CString GetProductEditionInfo() { return GetProductInfo() ? GetProductAndVersionString() : CString(); }

void SetRunningModule(int module) { g_runningModule = module; }

int GetRunningModule() { return g_runningModule; }

CString GetRunningModuleName() {
  const bool known = g_runningModule > 0 && g_runningModule < int(std::size(kModuleNames));
  return kModuleNames[known ? g_runningModule : KV_MODULE_UNKNOWN];
}
