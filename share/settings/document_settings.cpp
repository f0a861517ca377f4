// The groups of the document settings, their order in the tree, and the one schema upgrade.
#include "share/settings/document_settings.h"

#include "framework/archive.h"
#include "share/settings/internal/document_settings_table.h"

using namespace document_settings;

KV_IMPLEMENT_SETTINGS_GROUP(QFTurnFeatSettings, _T("TurnFeatures"), _T("TurnFeatures"), kTurnFeatRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFColorSettings, _T("Colors"), _T("Colors"), kColorRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFOpernSettings, _T("Operations"), _T("Operations"), kOpernRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFTurnColorSettings, _T("TurnColors"), _T("TurnColors"), kTurnColorRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFVRMLWriterSettings, _T("VRMLOutput"), _T("VRMLOutput"), kVRMLWriterRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFRebuildSettings, _T("Rebuild"), _T("Rebuild"), kRebuildRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFWireEDMColorSettings, _T("EDMColors"), _T("EDMColors"), kWireEDMColorRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFEdmFeatSettings, _T("EDMFeat"), _T("EDMFeat"), kEdmFeatRows)
KV_IMPLEMENT_SETTINGS_GROUP(QFConfigSettings, _T("Configurations"), _T("Configurations"), kConfigRows)

IMPLEMENT_SERIAL(QFFeatSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

QFFeatSettings::QFFeatSettings()
    : SettingsGroup(typeid(QFFeatSettings), _T("QFFeatSettings"), _T("Features"), InProductRoot(_T("Features")),
                    kFeatRows) {
  AddGroup<QFTurnFeatSettings>();
}

// ---- simulation

IMPLEMENT_SERIAL(QFSimulationSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 2)

QFSimulationSettings::QFSimulationSettings()
    : SettingsGroup(typeid(QFSimulationSettings), _T("QFSimulationSettings"), _T("Simulation"),
                    InProductRoot(_T("Simulation")), kSimulationRows) {}

void QFSimulationSettings::Serialize(CArchive& ar) {
  const bool isFirstSchema = ar.IsLoading() && ar.GetObjectSchema() < 2;
  SettingsGroup::Serialize(ar);
  if (!isFirstSchema) return;
  double deviation = 1e-05;
  GetValue(_T("MaxFacetDeviation"), deviation);
  SetValue(_T("MaxFacetDevTarget"), deviation);
  int quality = 100;
  GetValue(_T("TessellationQuality"), quality);
  SetValue(_T("TessQualityTarget"), quality);
}

// ---- display of nodes

IMPLEMENT_SERIAL(QFNodeDisplaySettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

QFNodeDisplaySettings::QFNodeDisplaySettings()
    : SettingsGroup(typeid(QFNodeDisplaySettings), _T("QFNodeDisplaySettings"), _T("NodeDisplayStatus"),
                    InProductRoot(_T("NodeDisplayStatus")), kNodeDisplayRows) {}

void QFNodeDisplaySettings::Serialize(CArchive& ar) {
  SettingsGroup::Serialize(ar);
  m_bSerialized = 1;
}

// ---- the root

IMPLEMENT_SERIAL(QFDocSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

QFDocSettings::QFDocSettings()
    : SettingsGroup(typeid(QFDocSettings), _T("QFDocSettings"), _T("Document"), InProductRoot(_T("Document")), {}) {
  AddGroup<QFFeatSettings>();
  AddGroup<QFColorSettings>();
  AddGroup<QFOpernSettings>();
  AddGroup<QFSimulationSettings>();
  AddGroup<QFTurnColorSettings>();
  AddGroup<QFVRMLWriterSettings>();
  AddGroup<QFRebuildSettings>();
  AddGroup<QFWireEDMColorSettings>();
  AddGroup<QFEdmFeatSettings>();
  AddGroup<QFAdv3AxisSettings>();
  AddGroup<QFConfigSettings>();
  AddGroup<QFNodeDisplaySettings>();
}
