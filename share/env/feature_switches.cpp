// Reading and writing back the feature switches.
#include "share/env/feature_switches.h"

#include "share/env/registry_access.h"
#include "share/env/registry_keys.h"

namespace {

constexpr int kBrowserMode = 11001;

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
