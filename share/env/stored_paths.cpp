// Paths in the registry and in the application settings.
#include "share/env/internal/stored_paths.h"

#include "share/settings/settings_key.h"
#include "share/utilities/files_and_folders.h"

CString ReadStoredText(HKEY hive, LPCTSTR path, LPCTSTR name) {
  QFSettingsKey key(CString(), path);
  key.SetKey(hive);
  QFStringValue text(name, CString());
  text.RestoreValueFromRegistry(&key);
  return text.GetValue();
}

CString ReadStoredTextOfUserOrMachine(LPCTSTR path, LPCTSTR name) {
  CString text = ReadStoredText(HKEY_CURRENT_USER, path, name);
  return text.IsEmpty() ? ReadStoredText(HKEY_LOCAL_MACHINE, path, name) : text;
}

void StoreText(HKEY hive, LPCTSTR path, LPCTSTR name, const CString& text) {
  QFSettingsKey key(CString(), path);
  key.SetKey(hive);
  QFStringValue(name, text).SaveValueToRegistry(&key);
}

CString TextOf(const QFSettingsKey* tree, LPCTSTR name) {
  CString text;
  if (tree) tree->GetValue(name, text);
  return text;
}

CString EndingInBackslash(CString path) {
  QFFileAndFolderUtilities().EnsureFolderPathEndsWithSlash(path);
  return path;
}
