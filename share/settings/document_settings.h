// QFDocSettings, the settings that travel with a document: 192 values for feature recognition, colours, operations and
// simulation. A new document gets a fresh tree. A document that is read brings its own: CArchive::ReadObject makes the
// tree, and what the document lacks keeps its default (QFSettingsKey::Serialize). The tree of the active document
// reaches the library through the callback behind GetActiveDocSettingsCB.
//
// The names, types and defaults stand in share/settings/internal/document_settings_table.h. The groups "Operations",
// "Simulation" and "Rebuild" share their registry keys with groups of the application's settings. Of their names only
// "ToolDisplay" is in both; the tree that is saved last sets it.
#pragma once

#include "share/settings/settings_group.h"

// The root, "Document". It has groups and no values of its own.
KV_SETTINGS_GROUP(QFDocSettings)

// "Simulation". Its archive record has schema 2:
//   1  "MaxFacetDeviation" and "TessellationQuality" held for the target too
//   2  "MaxFacetDevTarget" and "TessQualityTarget" beside them. A record of schema 1 gives them the former two's
//   values.
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

  int m_bSerialized = 0;  // 1 once it was stored or read
};

// The groups that are nothing but their tables. QFFeatSettings has QFTurnFeatSettings below it.
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
