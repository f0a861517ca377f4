// CKVVersionInfo: the constants of this build, which are release, dates, storage version and supported hosts. Any
// thread may read them.
#pragma once

#include "framework/text.h"

class KVSHARE_API CKVVersionInfo {
 public:
  // Name and year of the release; year; service pack.
  static constexpr LPCTSTR QF_VERSION_MAJOR_STRING = _T("Kestrova 2024");
  static constexpr LPCTSTR QF_VERSION_MAJOR_FOR_SERVICE_PACK = _T("2024");
  static constexpr LPCTSTR QF_SERVICE_PACK = _T("SP4");
  // Dates, yyyy/mmdd: version; build; technology database of this version.
  static constexpr LPCTSTR QF_VERSION_FOR_HELP_ABOUT = _T("2024/0715");
  static constexpr LPCTSTR QF_BUILD_DATE_FOR_HELP_ABOUT = _T("2024/0826");
  static constexpr LPCTSTR QF_VERSION_FOR_TECHDB = _T("2023/0713");
  // For shop-floor records. The blank at the end is part of it.
  static constexpr LPCTSTR QF_SF_VERSION_STRING = _T("2024 ");

  // The host: the supported releases; the highest supported major revision; its name; its build number.
  static constexpr LPCTSTR QF_REQUIRED_SOLIDWORKS_VERSION_CODE = _T("2023 or 2024");
  static constexpr int SW_VERSION_NOT_SUPPORTED_AFTER = 32;
  static constexpr LPCTSTR SW_VERSION_NOT_SUPPORTED_AFTER_STR = _T("SOLIDWORKS 2024");
  static constexpr int SW_BUILD_VERSION = 1999313;

  // Storage versions of documents: the one that this build writes, and two older layouts that readers test for.
  static constexpr float QF_STORAGE_VERSION = 38.0f;
  static constexpr float QF_STORAGE_VERSION_EX = 31.6f;
  static constexpr float QF_STORAGE_VERSION_2020_EX = 31.0f;

  // 1 if the date, yyyy/mmdd, is later than the date of this version. Compares only the first four and the last four
  // characters, as decimal numbers; other characters count as 0.
  static int IsGreater(const CString& date);
  // 1 if the storage version is newer than this build's.
  static int IsGreater(float version);

  // The folder of manuals, the INI file of the task pane and its control, from the environment, which is built if there
  // is none yet (share/env/app_env.h).
  static CString OnKestrovaAllPDFFilePath();
  static CString OnKestrovaTaskPaneINIFFilePath();
  static CString GetTaskPaneTabStringName();
};

// "2024", "2024/0826", "SP4", "2023 or 2024".
KVSHARE_API CString GetKVVersion();
KVSHARE_API CString GetKVBuildDate();
KVSHARE_API CString GetKVServicePack();
KVSHARE_API CString GetRequiredSWVersion();
