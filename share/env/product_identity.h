// The running product and its host: the description from the main module, the edition from the registry, and the host's
// version from the main module. The constants of the build are in share/core/version_info.h.
//
// The main module sets the host's version once, after it has connected to the host and before it starts any other
// thread. After that any thread may call. No call fails: an unknown text is empty, an unknown number 0 unless it says
// otherwise.
#pragma once

#include "framework/text.h"

// The description of the running product. The main module owns the one record and returns it from its callback
// (share/core/document_callbacks.h). This library calls it at each use and keeps no pointer.
struct ProductInfo {
  CString m_ProductName;
  CString m_ProductVersion;
  CString m_HostProductWord;  // the host's name in texts
  CString m_CADName;
  CString m_CADVersion;
  CString m_CADMinorVersion;
};

enum KVProductType : int {
  KV_PRODUCT_FULL = 0,
  KV_PRODUCT_TARNEL = 2,
};

enum KVKernelType : int {
  KV_KERNEL_DEFAULT = 0,
};

// ---- product

// Null if the main module has no description.
KVSHARE_API ProductInfo* GetProductInfo();
// Fields of the description; empty without one.
KVSHARE_API CString GetProductName();
KVSHARE_API CString GetProductVersion();
KVSHARE_API CString GetCADName();
KVSHARE_API CString GetCADVersion();
KVSHARE_API CString GetCADMinorVersion();
// Name, one blank, version; only the blank without a ProductInfo.
KVSHARE_API CString GetProductAndVersionString();
// The decimal number at the start of the product version; 0 if it starts with no number.
KVSHARE_API long GetKVVersionLong();

// Always KV_KERNEL_DEFAULT.
KVSHARE_API KVKernelType GetKernelType();
// KV_PRODUCT_TARNEL if the switch "EnableKVTarnel" in this release's debug key exists and is not 0. Reads the registry:
// call it once, not in a loop.
KVSHARE_API KVProductType GetProductType();

// ---- texts for this product

// The text with "Kestrova" replaced by the product's name, and then "SolidWorks" and "SOLIDWORKS" by the host's word;
// case counts. Without a ProductInfo the text is returned unchanged.
KVSHARE_API CString GetProductSpecificString2(CString text);
// Replaces the maker's name by that of the edition; case counts. KV_PRODUCT_TARNEL: in a text without "Brenmark" each
// "Kestrova" becomes "Brenmark". KV_PRODUCT_FULL: each "Brenmark" becomes "Kestrova".
KVSHARE_API void UpdateStringForTarnel(CString& text);

// ---- host

// The host's date code and revision, such as "32.1.0"; -1 and empty until set.
KVSHARE_API void SetSldWorksDateCode(long dateCode, CString revision);
KVSHARE_API long GetSldWorksDateCode();
KVSHARE_API CString GetSldWorksRevisionNumber();
// Sets major to the number before the first dot of the revision. 1 if there is a dot; else 0, and major is 0.
KVSHARE_API int GetSldWorksRevisionNumber(long& major);
// Sets minor to the last p + 1 characters of the revision, where p is the index of its first dot: "3.0" for "31.3.0",
// but "2.0" for "31.12.0". Kept for existing modules. 1 if there is a dot; else 0, and minor is unchanged.
KVSHARE_API int GetSldWorksMinorRevisionNumber(CString& minor);
// 0 if the host's major revision is newer than this build supports, else 1; 1 if the revision is unknown.
KVSHARE_API int IsValidSWVersion();
