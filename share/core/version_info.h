// CKVVersionInfo, the constants of this build: release, dates, storage version, hosts. Nothing here changes at run
// time; all of it is static, and any thread may read.
#pragma once

#include "framework/text.h"

class KVSHARE_API CKVVersionInfo {
 public:
  // Name and year of the release, the year alone, the service pack.
  static constexpr LPCTSTR QF_VERSION_MAJOR_STRING = _T("Kestrova 2024");
  static constexpr LPCTSTR QF_VERSION_MAJOR_FOR_SERVICE_PACK = _T("2024");
  static constexpr LPCTSTR QF_SERVICE_PACK = _T("SP4");
  // Dates, yyyy/mmdd: of the version, of the build, of the technology database that belongs to it.
  static constexpr LPCTSTR QF_VERSION_FOR_HELP_ABOUT = _T("2024/0715");
  static constexpr LPCTSTR QF_BUILD_DATE_FOR_HELP_ABOUT = _T("2024/0826");
  static constexpr LPCTSTR QF_VERSION_FOR_TECHDB = _T("2023/0713");
  // For shop-floor records; the blank at its end belongs to it.
  static constexpr LPCTSTR QF_SF_VERSION_STRING = _T("2024 ");

  // The host: which releases this build needs, the highest major revision that it accepts, the same in words, the
  // host's build number.
  static constexpr LPCTSTR QF_REQUIRED_SOLIDWORKS_VERSION_CODE = _T("2023 or 2024");
  static constexpr int SW_VERSION_NOT_SUPPORTED_AFTER = 32;
  static constexpr LPCTSTR SW_VERSION_NOT_SUPPORTED_AFTER_STR = _T("SOLIDWORKS 2024");
  static constexpr int SW_BUILD_VERSION = 1999313;

  // Version stamps of documents: what this build writes, and two former extended layouts that readers test for.
  static constexpr float QF_STORAGE_VERSION = 38.0f;
  static constexpr float QF_STORAGE_VERSION_EX = 31.6f;
  static constexpr float QF_STORAGE_VERSION_2020_EX = 31.0f;

  // 1 if the date, yyyy/mmdd, is later than this version's, as that of a file of a newer build is. Of the text only the
  // first four and the last four characters count, each as a decimal number; what is none counts as 0.
  static int IsGreater(const CString& date);
  // 1 if the storage version is above this build's.
  static int IsGreater(float version);

  // The environment's folder of manuals, its task pane INI file and its task pane control (share/env/app_env.h).
  static CString OnKestrovaAllPDFFilePath();
  static CString OnKestrovaTaskPaneINIFFilePath();
  static CString GetTaskPaneTabStringName();
};

// "2024", "2024/0826", "SP4", "2023 or 2024".
KVSHARE_API CString GetKVVersion();
KVSHARE_API CString GetKVBuildDate();
KVSHARE_API CString GetKVServicePack();
KVSHARE_API CString GetRequiredSWVersion();
