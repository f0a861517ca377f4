// The groups of the application settings, and their order in the tree.
#include "share/settings/application_settings.h"

#include "platform/paths.h"
#include "share/core/registry_keys.h"
#include "share/settings/feed_colors.h"
#include "share/settings/internal/application_settings_table.h"

using namespace application_settings;

// ---- computed defaults

namespace application_settings {

// The name is the text of a menu item and begins with "&", the mark of its access key.
CString ProductFolderInTemp() {
  TCHAR temp[255] = {};
  GetTempPathW(255, temp);
  CString name;
  name.LoadString(60113);
  return temp + name.TrimLeft(_T('&'));
}

CString LanguageName() {
  CString name;
  name.LoadString(58237);
  return name;
}

// A date before all releases, in local time.
CTime NeverChecked() { return {1999, 11, 28, 0, 0, 0}; }

}  // namespace application_settings

// ---- the groups

KV_IMPLEMENT_SETTINGS_GROUP(QFPostSettings, _T("PostData"), _T("PostData"), kPostRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFDebugSettings, _T("Debug"), _T("Debug"), kDebugRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFServicePackSettings, _T("ServicePack"), _T("ServicePack"), kServicePackRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFFeedSpeedSettings, _T("FeedSpeedLibrary"), _T("FeedSpeedLibrary"), kFeedSpeedRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFAppSimulationSettings, _T("Simulation"), _T("Simulation"), kAppSimulationRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFAppAssemblySettings, _T("Assembly"), _T("Assembly"), kAppAssemblyRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFAppCLDataSettings, _T("CLData"), _T("CLData"), kAppCLDataRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFDisplaySettings, _T("Display"), _T("Display"), kDisplayRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFWorkpieceSettings, _T("Workpiece"), _T("Workpiece"), kWorkpieceRows)
// Its values are in the root's registry key.
KV_IMPLEMENT_SETTINGS_GROUP(QFAppEdmSettings, _T("EDMApp"), kVersionName, kAppEdmRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFToolHolderPreviewSettings, _T("ToolHolderPreview"), _T("ToolHolderPreview"),
                            kToolHolderPreviewRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFAppRebuildSettings, _T("Rebuild"), _T("Rebuild"), kAppRebuildRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFSetupSheetSettings, _T("SetupSheet"), _T("SetupSheet"), kSetupSheetRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFLibFeatAppSettings, _T("LibFeat"), _T("LibFeat"), kLibFeatAppRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFToolpathSettings, _T("Toolpath"), _T("Toolpath"), kToolpathRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFDialogPositionSettings, _T("DialogPositions"), _T("DialogPositions"), kDialogPositionRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFMultiAxisOperSettings, _T("MultiAxis"), _T("MultiAxis"), {})

QFToolingSettings::QFToolingSettings()
    : SettingsGroup(typeid(QFToolingSettings), _T("QFToolingSettings"), _T("Tooling"), InProductRoot(_T("Tooling")),
                    kToolingRows) {}

QFKVUtilitiesSettings::QFKVUtilitiesSettings()
    : SettingsGroup(typeid(QFKVUtilitiesSettings), _T("QFKVUtilitiesSettings"), _T("Utilities"),
                    InProductRoot(_T("Utilities")), kKVUtilitiesRows) {}

// ---- toolbar

IMPLEMENT_SERIAL(QFToolbarSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

void QFToolbarSettings::GetDefaultButtons(CArray<int, int>& buttons) {
  buttons.RemoveAll();
  for (const int index : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 11}) {  // no 10: kept for existing toolbars
    buttons.Add(index);
    buttons.Add(1);
  }
}

QFToolbarSettings::QFToolbarSettings()
    : SettingsGroup(typeid(QFToolbarSettings), _T("QFToolbarSettings"), _T("Toolbar"), InProductRoot(_T("Toolbar")),
                    {}) {
  constexpr LPCTSTR kButtons = _T("ToolbarButtons");
  CArray<int, int> buttons;
  GetDefaultButtons(buttons);
  const LONGLONG wanted = buttons.GetSize();
  AddValue(kButtons, buttons);
  if (!RestoreValuesFromRegistry()) {
    SaveValuesToRegistry();
    return;
  }
  GetValue(kButtons, buttons);
  const LONGLONG stored = buttons.GetSize();
  if (stored >= wanted) return;
  // Adds whole pairs: a stored list of odd length ends one longer than the default. Kept for existing toolbars.
  for (LONGLONG at = stored; at < wanted; at += 2) {
    buttons.SetAtGrow(at, int(at / 2));
    buttons.SetAtGrow(at + 1, 1);
  }
  SetValue(kButtons, buttons);
  SaveValuesToRegistry();
}

// ---- operations and their filters

IMPLEMENT_SERIAL(QFOperFilterSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

QFOperFilterSettings::QFOperFilterSettings(const CString& name, const CString& path)
    : SettingsGroup(typeid(QFOperFilterSettings), _T("QFOperFilterSettings"), name, path, kOperFilterRows) {}

QFOperFilterSettings::QFOperFilterSettings() : QFOperFilterSettings(CString(), CString()) {}

IMPLEMENT_SERIAL(QFAppOperSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

QFAppOperSettings::QFAppOperSettings()
    : SettingsGroup(typeid(QFAppOperSettings), _T("QFAppOperSettings"), _T("Operations"),
                    InProductRoot(_T("Operations")), kAppOperRows) {
  constexpr int kFilters = 23;
  for (int i = 0; i < kFilters; ++i) {
    CString name;
    name.Format(_T("Oper_Filter%d"), i);
    AddKey(new QFOperFilterSettings(name, InProductRoot(_T("Operations\\")) + name));
  }
}

// ---- the root

IMPLEMENT_SERIAL(QFAppSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

QFAppSettings::QFAppSettings()
    : SettingsGroup(typeid(QFAppSettings), _T("QFAppSettings"), _T("Application"), kVersionKey, kAppRows) {
  AddGroup<QFPostSettings>();
  AddGroup<QFDebugSettings>();
  AddGroup<QFToolbarSettings>();
  AddGroup<QFServicePackSettings>();
  AddGroup<QFAppOperSettings>();
  AddGroup<QFFeedSpeedSettings>();
  AddGroup<QFAppSimulationSettings>();
  AddGroup<QFAppAssemblySettings>();
  AddGroup<QFAppCLDataSettings>();
  AddGroup<QFDisplaySettings>();
  AddGroup<QFWorkpieceSettings>();
  AddGroup<QFAppEdmSettings>();
  AddGroup<QFToolHolderPreviewSettings>();
  AddGroup<QFTurnFeedColorsSettings>();
  AddGroup<QFMillFeedColorsSettings>();
  AddGroup<QFEdmFeedColorsSettings>();
  AddGroup<QFAdv3AxisSettings>();
  AddGroup<QFAppRebuildSettings>();
  AddGroup<QFSetupSheetSettings>();
  AddGroup<QFLibFeatAppSettings>();
  AddGroup<QFToolpathSettings>();
  AddGroup<QFDialogPositionSettings>();
  AddGroup<QFToolingSettings>();
}

void QFAppSettings::ResetTheOpenGLOptionsValue() {
  auto* value = DYNAMIC_DOWNCAST(QFIntValue, FindSettingsValue(_T("UseHardwareRendering")));
  if (value && value->GetValue() != 1 && value->GetValue() != 2) value->SetValue(1);
}
