// QFDocSettings: the settings stored in a document, 192 values for feature recognition, colours, operations and
// simulation. A new document gets a new tree. For a document that is read, CArchive::ReadObject creates the tree;
// values that the document lacks keep their defaults (QFSettingsKey::Serialize). GetActiveDocSettingsCB returns the
// tree of the active document, which the main module owns.
//
// Names, types and defaults are in share/settings/internal/document_settings_table.h. The groups "Operations",
// "Simulation" and "Rebuild" share their registry keys with groups of the application settings. Only the name
// "ToolDisplay" is in both; the tree that is saved last sets it.
#pragma once

#include "share/settings/settings_group.h"

// The root, "Document". It holds groups and no values.
KV_SETTINGS_GROUP(QFDocSettings)

// "Simulation". Schemas of its archive record:
//   1  "MaxFacetDeviation" and "TessellationQuality" also apply to the target
//   2  adds "MaxFacetDevTarget" and "TessQualityTarget"; loading schema 1 copies the former two values to them
class KVSHARE_API QFSimulationSettings : public SettingsGroup {
  DECLARE_SERIAL(QFSimulationSettings)

 public:
  QFSimulationSettings();
  void Serialize(CArchive& ar) override;
};

class KVSHARE_API QFNodeDisplaySettings : public SettingsGroup {
  DECLARE_SERIAL(QFNodeDisplaySettings)

 public:
  QFNodeDisplaySettings();
  void Serialize(CArchive& ar) override;

  int m_bSerialized = 0;  // 1 after the object was saved or loaded
};

// Groups without members besides their tables. QFFeatSettings holds the sub-key QFTurnFeatSettings.
KV_SETTINGS_GROUP(QFFeatSettings)
KV_SETTINGS_GROUP(QFTurnFeatSettings)
KV_SETTINGS_GROUP(QFColorSettings)
KV_SETTINGS_GROUP(QFOpernSettings)
KV_SETTINGS_GROUP(QFTurnColorSettings)
KV_SETTINGS_GROUP(QFVRMLWriterSettings)
KV_SETTINGS_GROUP(QFRebuildSettings)
KV_SETTINGS_GROUP(QFWireEDMColorSettings)
KV_SETTINGS_GROUP(QFEdmFeatSettings)
KV_SETTINGS_GROUP(QFConfigSettings)
