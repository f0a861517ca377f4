// The tables of languages, and the environment's choice.
#include "share/env/language_choice.h"
#include "share/env/feature_switches.h"

#include <algorithm>

#include "platform/files.h"
#include "platform/locale.h"
#include "share/core/document_callbacks.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/internal/stored_paths.h"
#include "share/settings/settings_key.h"

namespace {

constexpr LPCTSTR kAutomatic = _T("Automatic");

// The language for a system's language. subLanguages is a set of bits: bit n for sub-language n.
struct SystemLanguage {
  WORD primary;
  unsigned long long subLanguages;
  QFDatabaseLang_e language;
};

constexpr unsigned long long kAny = ~0ULL;

constexpr SystemLanguage kSystemLanguages[] = {
    {4, 1 << 1 | 1 << 3 | 1 << 5, QF_DBLANG_CHINESE_TRADITIONAL},
    {4, 1 << 2 | 1 << 4, QF_DBLANG_CHINESE},
    {5, kAny, QF_DBLANG_CZECH},
    {7, kAny, QF_DBLANG_GERMAN},
    {8, kAny, QF_DBLANG_GREEK},
    {10, kAny, QF_DBLANG_SPANISH},
    {12, kAny, QF_DBLANG_FRENCH},
    {16, kAny, QF_DBLANG_ITALIAN},
    {17, kAny, QF_DBLANG_JAPANESE},
    {18, kAny, QF_DBLANG_KOREAN},
    {21, kAny, QF_DBLANG_POLISH},
    {22, 1 << 1, QF_DBLANG_PORTUGUESE_BRAZILIAN},
    {25, kAny, QF_DBLANG_RUSSIAN},
    {31, kAny, QF_DBLANG_TURKISH},
};

// The host's names of languages, in the host's spelling, and their folders.
constexpr struct {
  LPCTSTR host;
  LPCTSTR folder;
} kHostLanguages[] = {
    {_T("english"), _T("English")},
    {_T("german"), _T("German")},
    {_T("french"), _T("French")},
    {_T("japanese"), _T("Japanese")},
    {_T("italian"), _T("Italian")},
    {_T("polish"), _T("Polish")},
    {_T("russian"), _T("Russian")},
    {_T("spanish"), _T("Spanish")},
    {_T("turkish"), _T("Turkish")},
    {_T("czech"), _T("Czech")},
    {_T("korean"), _T("Korean")},
    {_T("portugese-brazilian"), _T("Portuguese-Brazilian")},
    {_T("chinese"), _T("Chinese-Traditional")},
    {_T("chinese-simplified"), _T("Chinese")},
};

// 1 if the user has set the host to English.
int HostIsSetToEnglish() {
  constexpr LPCTSTR kName = _T("Use English language");
  QFSettingsKey key(CString(), kHostGeneralKey);
  key.AddValue(kName, 0);
  key.RestoreValuesFromRegistry();
  int english = 0;
  key.GetValue(kName, english);
  return english == 1;
}

CString FolderOfName(const CString& name) { return _T("lang\\") + name + _T("\\"); }

}  // namespace

QFDatabaseLang_e GetLanguageOfSystem(WORD languageId) {
  const unsigned long long subLanguage = 1ULL << SUBLANGID(languageId);
  const auto row = std::find_if(std::begin(kSystemLanguages), std::end(kSystemLanguages), [&](const auto& candidate) {
    return candidate.primary == PRIMARYLANGID(languageId) && (candidate.subLanguages & subLanguage);
  });
  return row == std::end(kSystemLanguages) ? QF_DBLANG_ENGLISH : row->language;
}

CString GetLanguageFolder(QFDatabaseLang_e language) {
  const bool known = std::size_t(language) < kInstallLanguages.size();
  return FolderOfName(kInstallLanguages[known ? language : QF_DBLANG_ENGLISH].name);
}

void GetLangAlignedToSWLang(CString& language) {
  const CString wanted = GetDebugRegistryVal(_T("BrenmarkLanguage"), CString());
  if (!wanted.IsEmpty()) {
    language = wanted;
    return;
  }
  const CString host = GetSolidWorksLangName();
  for (const auto& row : kHostLanguages) {
    if (host.CompareNoCase(row.host) == 0) language = row.folder;
  }
}

// ---- the environment's choice

QFDatabaseLang_e CKVEnvApp::GetCorrespondingDBLangName(const CString& name) const {
  const auto row =
      std::find_if(kInstallLanguages.begin(), kInstallLanguages.end(),
                   [&](const InstallLanguage& language) { return language.isNamed && name == language.name; });
  return row == kInstallLanguages.end() ? QF_DBLANG_ENGLISH : QFDatabaseLang_e(row - kInstallLanguages.begin());
}

CString CKVEnvApp::GetLanguageForSIMCO() const {
  const bool known = std::size_t(m_TechDBLang) < kInstallLanguages.size();
  return kInstallLanguages[known ? m_TechDBLang : QF_DBLANG_ENGLISH].editorCode;
}

// The automatic choice doesn't check whether its folder exists, the choice by name does. Kept for existing
// installations.
void CKVEnvApp::SetKVDefLangAndDataRelPath() {
  m_TechDBLang = QF_DBLANG_ENGLISH;
  m_LanguageFolder = GetLanguageFolder(QF_DBLANG_ENGLISH);

  QFSettingsKey key(CString(), kVersionKey);
  key.AddValue(_T("Language"), kAutomatic);
  key.RestoreValuesFromRegistry();
  const CString name = TextOf(&key, _T("Language"));
  if (name == kAutomatic) {
    if (HostIsSetToEnglish()) return;
    m_TechDBLang = GetLanguageOfSystem(GetUserDefaultLangID());
    m_LanguageFolder = GetLanguageFolder(m_TechDBLang);
    return;
  }
  const CString folder = FolderOfName(name);
  if (_waccess(InInstall(folder + m_ResourceDllName), 0) != 0) return;
  m_LanguageFolder = folder;
  m_TechDBLang = GetCorrespondingDBLangName(name);
}
