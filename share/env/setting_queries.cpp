// Searches for single values in the main module's settings trees.
#include "share/env/setting_queries.h"

#include "companions/geometry/constants.h"
#include "share/core/document_callbacks.h"
#include "share/settings/settings_key.h"

namespace {

int DisplaySetting(LPCTSTR name) {
  int value = 0;
  const QFSettingsKey* settings = GetAppSettingsCB();
  if (const QFSettingsKey* display = settings ? settings->GetKey(_T("Display")) : nullptr)
    display->GetValue(name, value);
  return value;
}

}  // namespace

int GetLastopernDlgtab() { return DisplaySetting(_T("OpenOperationDialogToLastPage")); }
int GetCollapseOnPreview() { return DisplaySetting(_T("CollapseOperationOnPreview")); }

double GetSimulationSettingsFacetDeviation() {
  double deviation = -1.0;
  const QFSettingsKey* settings = GetActiveDocSettingsCB();
  if (const QFSettingsKey* simulation = settings ? settings->GetKey(_T("Simulation")) : nullptr)
    simulation->GetValue(_T("MaxFacetDeviation"), deviation);
  // Larger deviations mean the default, kept for existing modules.
  if (deviation > -1.0 + RESABS && deviation * 1000 > 0.1 - RESABS) deviation = -1.0;
  return deviation;
}
