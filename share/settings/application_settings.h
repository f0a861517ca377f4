// QFAppSettings, the settings that belong to the user and the machine, as opposed to one document: 678 values in 23
// groups and the root. The main module owns the one live tree, restores it from the registry, saves it on changes, and
// hands it to the library through the callback behind GetAppSettingsCB:
//
//   int lines = 2;
//   if (const QFSettingsKey* settings = GetAppSettingsCB()) settings->GetValue(_T("LineWidth"), lines);
//
// The names, types and defaults stand in share/settings/internal/application_settings_table.h. Three groups declare a
// name twice with two defaults: "EnableToolHolderOpenGLPreview", "StockDispType" and
// "DisplayToolHolderPreviewOnToolCrib". Both values stay, which is required and shows: reading and changing by name
// meet the one declared last; saving writes it first and then the other over it; restoring gives both what is stored.
// So a change of such a name lasts until the tree is saved and restored; from then on both have what the one declared
// first had.
//
// Three of the keys are the tables of feed colours (share/settings/feed_colors.h), which hold what the user enters and
// make every restore of the whole tree give 0.
//
// Some defaults come from the language library, which has to be loaded ahead of building the tree: without it they are
// empty.
#pragma once

#include "share/settings/settings_group.h"

// The root, "Application". Its registry key is the release's own; the groups' are shared by all releases.
class KVSHARE_API QFAppSettings : public SettingsGroup {
  DECLARE_SERIAL(QFAppSettings)

 public:
  // Builds the whole tree. See QFToolbarSettings for what that may write into the registry.
  QFAppSettings();

  // Hardware rendering is 1 or 2: brings "UseHardwareRendering" of the display group back to 1 from anything else.
  // Saves nothing.
  void ResetTheOpenGLOptionsValue();
};

// "ToolbarButtons", pairs of a button's index and a flag. This group alone reads and writes the registry while it is
// being built: what is stored there is taken over; a list that is shorter than the present one is filled up with
// buttons that are on, and saved; without a stored list the default is saved.
class KVSHARE_API QFToolbarSettings : public SettingsGroup {
  DECLARE_SERIAL(QFToolbarSettings)

 public:
  QFToolbarSettings();

  // The list without the registry: all buttons, and all are on.
  static void GetDefaultButtons(CArray<int, int>& buttons);
};

// One of the operations' 23 filters.
class KVSHARE_API QFOperFilterSettings : public SettingsGroup {
  DECLARE_SERIAL(QFOperFilterSettings)

 public:
  QFOperFilterSettings(const CString& name, const CString& path);

 protected:
  // For archives, which hold neither name nor path: what is read has none.
  QFOperFilterSettings();
};

// The square necks of turning tools. It has no run-time class of its own: an archive takes it for a QFSettingsKey and
// can't bring it back.
class KVSHARE_API QFToolingSettings : public SettingsGroup {
 public:
  QFToolingSettings();
};

// The groups that are nothing but their tables.
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

// ---- outside the tree; built where they are needed

// "Language", the language of the utilities, which run apart from the product. Without a run-time class of its own, as
// QFToolingSettings.
class KVSHARE_API QFKVUtilitiesSettings : public SettingsGroup {
 public:
  QFKVUtilitiesSettings();
};

// Declares no values.
KV_SETTINGS_GROUP(QFMultiAxisOperSettings)
