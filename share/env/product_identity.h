// Which product runs, in which host: the description that the main module supplies, the edition that the registry
// selects, and the host facts that the main module passes in at start. The build's own constants stand in
// share/core/version_info.h.
//
// The host facts are set once, by the main module when it has connected to the host, ahead of any other thread; they
// are kept to the end of the process and stored nowhere. After that any thread may call. Nothing fails: what is not
// known is empty, 0 or the result told.
#pragma once

#include "framework/text.h"

// The running product in words. The main module owns the one record and hands it out through its callback
// (share/core/document_callbacks.h); this library asks for it at each call and keeps no pointer.
struct ProductInfo {
  CString m_ProductName;
  CString m_ProductVersion;
  CString m_HostProductWord;  // what texts call the host
  CString m_CADName;
  CString m_CADVersion;
  CString m_CADMinorVersion;
};

enum KVProductType {
  KV_PRODUCT_FULL = 0,
  KV_PRODUCT_TARNEL = 2,
};

enum KVKernelType {
  KV_KERNEL_DEFAULT = 0,
};

// ---- product

// Null if the main module has none.
KVSHARE_API ProductInfo* GetProductInfo();
// Fields of it, empty without one.
KVSHARE_API CString GetProductName();
KVSHARE_API CString GetProductVersion();
KVSHARE_API CString GetCADName();
KVSHARE_API CString GetCADVersion();
KVSHARE_API CString GetCADMinorVersion();
// Name, one blank, version; the blank alone without a ProductInfo.
KVSHARE_API CString GetProductAndVersionString();
// The decimal number with which the product version begins; 0 if there is none.
KVSHARE_API long GetKVVersionLong();

// Always KV_KERNEL_DEFAULT.
KVSHARE_API KVKernelType GetKernelType();
// KV_PRODUCT_TARNEL if the switch "EnableKVTarnel" of this release's debug key is there and not 0. A registry read:
// call it once, not in a loop.
KVSHARE_API KVProductType GetProductType();

// ---- texts for this product

// Replaces "Kestrova" by the product's name, then "SolidWorks" and "SOLIDWORKS" by the host's word; case counts.
// Without a ProductInfo the text comes back as it is.
KVSHARE_API CString GetProductSpecificString2(CString text);
// Brings the maker's word in line with the edition: in the OEM edition, which is KV_PRODUCT_TARNEL, a text without
// "Brenmark" has each "Kestrova" replaced by it; in the other each "Brenmark" becomes "Kestrova". Case counts.
KVSHARE_API void UpdateStringForTarnel(CString& text);

// ---- host

// Date code and revision text, such as "32.1.0"; -1 and empty until set.
KVSHARE_API void SetSldWorksDateCode(long dateCode, CString revision);
KVSHARE_API long GetSldWorksDateCode();
KVSHARE_API CString GetSldWorksRevisionNumber();
// The number ahead of the revision's first point. 1 if there is a point; else 0, and major is 0.
KVSHARE_API int GetSldWorksRevisionNumber(long& major);
// With the first point at index p the last p + 1 characters of the revision: what follows the point in "31.3.0", but
// not in "31.12.0", which gives "2.0"; that is required. 1 if there is a point; else 0, and minor stays.
KVSHARE_API int GetSldWorksMinorRevisionNumber(CString& minor);
// 0 if the host's major revision is above what this build accepts; 1 also if it is not known.
KVSHARE_API int IsValidSWVersion();
