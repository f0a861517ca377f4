// QFAppSettings: the settings of the user and the machine, as opposed to those of one document. 678 values in the root
// and 23 groups. The main module owns the one live tree, restores it from the registry, saves it after changes, and
// returns it from the callback that GetAppSettingsCB calls:
//
//   int lines = 2;
//   if (const QFSettingsKey* settings = GetAppSettingsCB()) settings->GetValue(_T("LineWidth"), lines);
//
// Names, types and defaults are in share/settings/internal/application_settings_table.h. Three groups declare a name
// twice, with two defaults: "EnableToolHolderOpenGLPreview", "StockDispType" and "DisplayToolHolderPreviewOnToolCrib".
// Both values are kept for existing modules. Access by name uses the value declared last. Saving writes that value
// first and then overwrites it with the other one; restoring sets both to the stored number. So a change of such a name
// is lost when the tree is saved and restored: both values then have the number of the value declared first.
//
// Three of the keys are the tables of feed colours (share/settings/feed_colors.h). They hold the user's rows, and they
// make every restore of the whole tree return 0.
//
// The defaults of "AutoSaveDirectory", "ImportExportDirectory" and "Language" contain texts of the language library.
// The environment's start loads this library, but it also reads and completes this tree (share/env/app_env.h). So a
// main module builds the tree before InitAppEnv, and after it sets these three from a second tree. Before that the two
// folders are the temporary folder, and "Language" is empty.
#pragma once

#include "share/settings/settings_group.h"

// The root, "Application". Its registry key belongs to this release; all releases share the keys of the groups.
class KVSHARE_API QFAppSettings : public SettingsGroup {
  DECLARE_SERIAL(QFAppSettings)

 public:
  // Builds the whole tree. QFToolbarSettings may write into the registry meanwhile.
  QFAppSettings();

  // Sets "UseHardwareRendering" of the display group to 1 unless it is 1 or 2. Saves nothing.
  void ResetTheOpenGLOptionsValue();
};

// "ToolbarButtons": pairs of a button's index and a flag, 1 for shown. Only this group reads and writes the registry in
// its constructor: it takes the stored list; fills a list that is shorter than the default with shown buttons, and
// saves it; and saves the default if no list is stored.
class KVSHARE_API QFToolbarSettings : public SettingsGroup {
  DECLARE_SERIAL(QFToolbarSettings)

 public:
  QFToolbarSettings();

  // The default list, without the registry: all buttons, all shown.
  static void GetDefaultButtons(CArray<int, int>& buttons);
};

// One of the operations' 23 filters.
class KVSHARE_API QFOperFilterSettings : public SettingsGroup {
  DECLARE_SERIAL(QFOperFilterSettings)

 public:
  QFOperFilterSettings(const CString& name, const CString& path);

 protected:
  // For archives only. An archive stores neither name nor path, so a loaded filter has none.
  QFOperFilterSettings();
};

// The square necks of turning tools. The class has no run-time class: an archive stores it as a QFSettingsKey and can't
// restore it.
class KVSHARE_API QFToolingSettings : public SettingsGroup {
 public:
  QFToolingSettings();
};

// Groups without members besides their tables.
KV_SETTINGS_GROUP(QFPostSettings)
KV_SETTINGS_GROUP(QFDebugSettings)
KV_SETTINGS_GROUP(QFServicePackSettings)
KV_SETTINGS_GROUP(QFAppOperSettings)
KV_SETTINGS_GROUP(QFFeedSpeedSettings)
KV_SETTINGS_GROUP(QFAppSimulationSettings)
KV_SETTINGS_GROUP(QFAppAssemblySettings)
KV_SETTINGS_GROUP(QFAppCLDataSettings)
KV_SETTINGS_GROUP(QFDisplaySettings)
KV_SETTINGS_GROUP(QFWorkpieceSettings)
KV_SETTINGS_GROUP(QFAppEdmSettings)
KV_SETTINGS_GROUP(QFToolHolderPreviewSettings)
KV_SETTINGS_GROUP(QFAppRebuildSettings)
KV_SETTINGS_GROUP(QFSetupSheetSettings)
KV_SETTINGS_GROUP(QFLibFeatAppSettings)
KV_SETTINGS_GROUP(QFToolpathSettings)
KV_SETTINGS_GROUP(QFDialogPositionSettings)

// ---- outside the tree; build one where you need it

// "Language": the language of the utilities, which are programs of their own. Like QFToolingSettings it has no run-time
// class.
class KVSHARE_API QFKVUtilitiesSettings : public SettingsGroup {
 public:
  QFKVUtilitiesSettings();
};

// Declares no values.
KV_SETTINGS_GROUP(QFMultiAxisOperSettings)
