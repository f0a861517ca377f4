// Reads the feature switches and writes missing ones with their defaults.
#include "share/env/feature_switches.h"

#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/settings/settings_key.h"

namespace {

constexpr int kBrowserMode = 11001;

// Reads one value; the default if it is missing.
template <class Value>
Value ReadSwitch(LPCTSTR path, const CString& name, Value value) {
  QFSettingsKey key(_T("Debug"), path);
  key.AddValue(name, value);
  if (key.RestoreValuesFromRegistry()) key.GetValue(name, value);
  return value;
}

void WriteIfMissing(LPCTSTR path, LPCTSTR name, int value) {
  int found = 0;
  GetRegSettingDwordValue(HKEY_CURRENT_USER, path, name, &found);
  if (!found) SetRegSettingDwordValue(HKEY_CURRENT_USER, path, name, value);
}

int ReadVersionSwitch(const FeatureSwitch& feature) { return GetDebugRegistryVal(feature.name, feature.defaultValue); }

int ReadProductSwitch(const FeatureSwitch& feature) {
  return GetVersionIndependentDebugRegistryVal(feature.name, feature.defaultValue);
}

}  // namespace

int GetDebugRegistryVal(const CString& name, int defaultValue) {
  return ReadSwitch(kVersionDebugKey, name, defaultValue);
}

CString GetDebugRegistryVal(const CString& name, const CString& defaultValue) {
  return ReadSwitch(kVersionDebugKey, name, defaultValue);
}

int GetVersionIndependentDebugRegistryVal(const CString& name, int defaultValue) {
  return ReadSwitch(kProductDebugKey, name, defaultValue);
}

void GetLegacyTurnDataRegistryData(int& found, int& value) {
  constexpr LPCTSTR kName = _T("LegacyTurnDataCorrection");
  found = 0;
  value = 0;
  QFSettingsKey key(_T("Debug"), kVersionDebugKey);
  key.AddValue(kName, 0);
  if (!key.RestoreValuesFromRegistry()) return;
  found = 1;
  key.GetValue(kName, value);
}

int GetIsToolBlockEnabled() { return ReadVersionSwitch(kVersionSwitches[0]); }
int GetIsPrimeTurningForFaceFinishRegSupport() { return ReadVersionSwitch(kVersionSwitches[1]); }
int GetIsPrimeTurningSupportsAllStrategies() { return ReadVersionSwitch(kVersionSwitches[2]); }
int GetIsPrimeTurningSupportsRetractDistance() { return ReadVersionSwitch(kVersionSwitches[3]); }

int GetIsWIPImprovementEnabled() { return ReadProductSwitch(kProductSwitches[0]); }
int GetIsWIPInvalidateOnTPDeleteEnabled() { return ReadProductSwitch(kProductSwitches[1]); }
int GetIs3AxisFeatImprovementEnabled() { return ReadProductSwitch(kProductSwitches[2]); }
int GetIsDynamicWIPDisplayEnabled() { return ReadProductSwitch(kProductSwitches[3]); }

int qf_getIsCRF1363ShareRegistryEnabled() { return 1; }
int GetIsPrimeTurningRegSupport() { return 1; }
int IsPrimeTurnSupported() { return GetIsPrimeTurningRegSupport(); }

void WriteBackStartSwitch(const FeatureSwitch& feature) {
  WriteIfMissing(kVersionDebugKey, feature.name, feature.defaultValue);
}

void SetSolidWorksExeNameToRegistry() { WriteIfMissing(kBrowserEmulationKey, _T("SLDWORKS.exe"), kBrowserMode); }
void SetSolidEdgeExeNameToRegistry() { WriteIfMissing(kBrowserEmulationKey, _T("Edge.exe"), kBrowserMode); }
