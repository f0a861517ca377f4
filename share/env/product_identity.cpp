// The running product, its edition and its host.
#include "share/env/product_identity.h"
#include "share/env/feature_switches.h"

#include <utility>

#include "platform/numbers.h"
#include "share/core/document_callbacks.h"
#include "share/core/registry_access.h"
#include "share/core/version_info.h"

namespace {

constexpr LPCTSTR kProductWord = _T("Kestrova");
constexpr LPCTSTR kOemWord = _T("Brenmark");

struct HostFacts {
  long dateCode = -1;
  CString revision;
};

HostFacts& Host() {
  static HostFacts facts;
  return facts;
}

CString FieldOf(CString ProductInfo::*field) {
  const ProductInfo* info = GetProductInfo();
  return info ? info->*field : CString();
}

}  // namespace

// ---- product

ProductInfo* GetProductInfo() { return GetProductInfoCB(); }

CString GetProductName() { return FieldOf(&ProductInfo::m_ProductName); }
CString GetProductVersion() { return FieldOf(&ProductInfo::m_ProductVersion); }
CString GetCADName() { return FieldOf(&ProductInfo::m_CADName); }
CString GetCADVersion() { return FieldOf(&ProductInfo::m_CADVersion); }
CString GetCADMinorVersion() { return FieldOf(&ProductInfo::m_CADMinorVersion); }

CString GetProductAndVersionString() { return GetProductName() + _T(" ") + GetProductVersion(); }

long GetKVVersionLong() { return IntegerFromUtf8(ToUtf8(GetProductVersion())); }

KVKernelType GetKernelType() { return KV_KERNEL_DEFAULT; }

KVProductType GetProductType() {
  return GetDebugRegistryVal(_T("EnableKVTarnel"), 0) ? KV_PRODUCT_TARNEL : KV_PRODUCT_FULL;
}

// ---- texts for this product

CString GetProductSpecificString2(CString text) {
  const ProductInfo* info = GetProductInfo();
  if (!info) return text;
  text.Replace(kProductWord, info->m_ProductName);
  text.Replace(_T("SolidWorks"), info->m_HostProductWord);
  text.Replace(_T("SOLIDWORKS"), info->m_HostProductWord);
  return text;
}

void UpdateStringForTarnel(CString& text) {
  const bool named = text.Find(kOemWord) >= 0;
  const bool isOem = GetProductType() == KV_PRODUCT_TARNEL;
  if (!isOem && named) text.Replace(kOemWord, kProductWord);
  if (isOem && !named) text.Replace(kProductWord, kOemWord);
}

// ---- host

void SetSldWorksDateCode(long dateCode, CString revision) { Host() = {dateCode, std::move(revision)}; }

long GetSldWorksDateCode() { return Host().dateCode; }

CString GetSldWorksRevisionNumber() { return Host().revision; }

int GetSldWorksRevisionNumber(long& major) {
  major = 0;
  const int point = Host().revision.Find(_T('.'));
  if (point < 0) return 0;
  major = IntegerFromUtf8(ToUtf8(Host().revision.Left(point)));
  return 1;
}

int GetSldWorksMinorRevisionNumber(CString& minor) {
  const int point = Host().revision.Find(_T('.'));
  if (point < 0) return 0;
  minor = Host().revision.Right(point + 1);
  return 1;
}

int IsValidSWVersion() {
  long major = 0;
  return !GetSldWorksRevisionNumber(major) || major <= CKVVersionInfo::SW_VERSION_NOT_SUPPORTED_AFTER;
}
