// The handlers on the platform's profile calls.
#include "share/utilities/ini_handlers.h"

#include <array>
#include <vector>

#include "platform/files.h"
#include "platform/profile.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"

namespace {

constexpr DWORD kValueUnits = 1024;
constexpr DWORD kListUnits = 32767;
constexpr LPCTSTR kConditions = _T("StrategyCondition1");

// Appends the names of the section's keys; for a null section, the names of all sections.
void AppendNames(const CString& file, LPCTSTR section, CList<CString>& names) {
  if (file.IsEmpty()) return;
  std::vector<TCHAR> list(kListUnits);
  GetPrivateProfileStringW(section, nullptr, _T(""), list.data(), kListUnits, file);
  for (LPCTSTR name = list.data(); *name; name += TextView(name).size() + 1) names.AddTail(name);
}

}  // namespace

// ---- both handlers

CString QFINIFile::GetValue(const CString& section, const CString& key) const {
  if (m_FileName.IsEmpty()) return CString();
  std::array<TCHAR, kValueUnits> value = {};
  GetPrivateProfileStringW(section, key, _T(""), value.data(), kValueUnits, m_FileName);
  return CString(value.data());
}

void QFINIFile::SetValue(const CString& section, const CString& key, const CString& value) {
  if (!m_FileName.IsEmpty()) WritePrivateProfileStringW(section, key, value, m_FileName);
}

void QFINIFile::SetValue(const CString& section, const CString& key, int value) {
  CString text;
  text.Format(_T("%d"), value);
  SetValue(section, key, text);
}

void QFINIFile::SetValue(const CString& section, const CString& key, double value) {
  CString text;
  text.Format(_T("%0.6g"), value);
  SetValue(section, key, text);
}

void QFINIFile::GetSections(CList<CString>& sections) const { AppendNames(m_FileName, nullptr, sections); }

void QFINIFile::GetKeys(const CString& section, CList<CString>& keys) const { AppendNames(m_FileName, section, keys); }

void QFINIFile::RemoveSection(const CString& section) {
  if (!m_FileName.IsEmpty()) WritePrivateProfileStringW(section, nullptr, nullptr, m_FileName);
}

// ---- the shop floor's files

void QFShopFloorINIHandler::SetINIFileName(const CString& fileName) {
  m_FileName = fileName;
  FILE* const file = _wfopen(m_FileName, _T("w, ccs=UTF-16LE"));
  if (file) std::fclose(file);
}

// ---- the tables of features and strategies

CString QFTBMINIHandler::GetBaseINIPathFromRegistry() {
  CString path = GetRegSettingStringValue(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath"));
  if (path.IsEmpty()) path = GetRegSettingStringValue(HKEY_LOCAL_MACHINE, kVersionKey, _T("KVDataPath"));
  return path + _T("\\KVTBM");
}

void QFTBMINIHandler::SetINIFileName(const CString& fileName) {
  m_FileName = GetBaseINIPathFromRegistry() + _T("\\") + fileName;
}

double QFTBMINIHandler::GetFileVersion(const CString& fileName) {
  if (fileName.IsEmpty()) return 0.0;
  SetINIFileName(fileName);
  if (!GetValue(kConditions, _T("FeatureIndex")).IsEmpty()) return 2.3;
  if (!GetValue(kConditions, _T("FeatureCatalog")).IsEmpty()) return 2.0;
  return 1.0;
}
