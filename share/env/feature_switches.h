// The feature switches: registry values by which an installation is steered without a new release.
//
// Three tables hold them all. Those of kStartSwitches are written back with their default when the environment starts,
// if they are missing, so that support staff find them; the others are read on demand and never written. An existing
// value is never changed. Each Get... is a registry read: call it once, not in a loop. Any thread may call.
#pragma once

#include <array>
#include <string_view>

#include "framework/text.h"

struct FeatureSwitch {
  LPCTSTR name;
  int defaultValue;
};

// Table 1, in this release's debug key, in the order of the switches' operations in share/env/app_env.h.
inline constexpr std::array<FeatureSwitch, 14> kStartSwitches = {{
    {_T("ShowCustomChuckOptions"), 1},
    {_T("CalMaxFitCirInThreads"), 0},
    {_T("BAxisContinuousSupport"), 4},
    {_T("ContinuousBAxisTlpKeepArcMoves"), 0},
    {_T("BAxisFaceFinishOperationSupport"), 0},
    {_T("NewSetSpindleDirForTurnMillTurnMachineSupport"), 1},
    {_T("ShowHideToolpathSegmentsSupport"), 1},
    {_T("ColorToolpathSegmentsSupport"), 1},
    {_T("ColorHiddenTlpMoveSupport"), 1},
    {_T("StepThruTlpCRFSupport"), 1},
    {_T("CRF1478TurnSupport"), 1},
    {_T("CRF1478For2axSupport"), 1},
    {_T("GetWIPArcSupport"), 1},
    {_T("PostingPerformanceImprovements"), 1},
}};

// Table 2, in this release's debug key, read on demand. Two of its switches are texts or belong to other services:
// "EnableKVTarnel" (product identity), "BrenmarkLanguage" (language), "LogAnalyticsData" (diagnostics).
inline constexpr std::array<FeatureSwitch, 4> kVersionSwitches = {{
    {_T("EnableToolBlock"), 1},
    {_T("PrimeTurningSupportForFaceFinish"), 0},
    {_T("PrimeTurningSupportsAllStrategies"), 0},
    {_T("PrimeTurningSupportsRetractDistance"), 0},
}};

// Table 3, in the debug key that survives upgrades, read on demand.
inline constexpr std::array<FeatureSwitch, 4> kProductSwitches = {{
    {_T("EnableWIPImprovement"), 1},
    {_T("EnableWIPInvalidateOnTPDelete"), 1},
    {_T("Enable3AxisFeatImprovement"), 1},
    {_T("EnableDynamicWIPDisplay"), 0},
}};

// Switches by name, from this release's debug key or the one that survives upgrades. A missing value gives the default;
// a present one its content, also if that is 0.
KVSHARE_API int GetDebugRegistryVal(const CString& name, int defaultValue);
KVSHARE_API CString GetDebugRegistryVal(const CString& name, const CString& defaultValue);
KVSHARE_API int GetVersionIndependentDebugRegistryVal(const CString& name, int defaultValue);

// The switch "LegacyTurnDataCorrection": found is 1 and value its content if it is there, else both are 0.
KVSHARE_API void GetLegacyTurnDataRegistryData(int& found, int& value);

KVSHARE_API int GetIsToolBlockEnabled();
KVSHARE_API int GetIsPrimeTurningForFaceFinishRegSupport();
KVSHARE_API int GetIsPrimeTurningSupportsAllStrategies();
KVSHARE_API int GetIsPrimeTurningSupportsRetractDistance();

KVSHARE_API int GetIsWIPImprovementEnabled();
KVSHARE_API int GetIsWIPInvalidateOnTPDeleteEnabled();
KVSHARE_API int GetIs3AxisFeatImprovementEnabled();
KVSHARE_API int GetIsDynamicWIPDisplayEnabled();

// Always 1, without a read.
KVSHARE_API int qf_getIsCRF1363ShareRegistryEnabled();
KVSHARE_API int GetIsPrimeTurningRegSupport();
KVSHARE_API int IsPrimeTurnSupported();

// The row of kStartSwitches with that name, which has to be there.
consteval FeatureSwitch StartSwitch(TextView name) {
  std::size_t row = 0;
  while (name != kStartSwitches.at(row).name) ++row;
  return kStartSwitches[row];
}
// Writes the switch into the user's hive if it is missing.
void WriteBackStartSwitch(const FeatureSwitch& feature);

// Have the host's embedded web control emulate browser mode 11001, unless a mode is set. The main module calls them.
KVSHARE_API void SetSolidWorksExeNameToRegistry();
KVSHARE_API void SetSolidEdgeExeNameToRegistry();
