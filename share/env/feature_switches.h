// The feature switches: registry values that change the behaviour of an installation without a new release.
//
// Three tables hold all switches. The environment's start writes the missing ones of kStartSwitches with their
// defaults, so that support staff find them; the others are read on demand and never written. An existing value is
// never changed. Each Get... reads the registry: call it once, not in a loop. Any thread may call.
#pragma once

#include <array>
#include <string_view>

#include "framework/text.h"

struct FeatureSwitch {
  LPCTSTR name;
  int defaultValue;
};

// Table 1: in this release's debug key, in the order in which the start writes them.
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

// Table 2: in this release's debug key, read on demand. The same key has "EnableKVTarnel"
// (share/env/product_identity.h) and "BrenmarkLanguage" (share/env/language_choice.h).
inline constexpr std::array<FeatureSwitch, 4> kVersionSwitches = {{
    {_T("EnableToolBlock"), 1},
    {_T("PrimeTurningSupportForFaceFinish"), 0},
    {_T("PrimeTurningSupportsAllStrategies"), 0},
    {_T("PrimeTurningSupportsRetractDistance"), 0},
}};

// Table 3: in the debug key that survives upgrades, read on demand.
inline constexpr std::array<FeatureSwitch, 4> kProductSwitches = {{
    {_T("EnableWIPImprovement"), 1},
    {_T("EnableWIPInvalidateOnTPDelete"), 1},
    {_T("Enable3AxisFeatImprovement"), 1},
    {_T("EnableDynamicWIPDisplay"), 0},
}};

// Switches by name: GetDebugRegistryVal from this release's debug key, the other from the debug key that survives
// upgrades. The default if the value is missing; a stored 0 counts.
KVSHARE_API int GetDebugRegistryVal(const CString& name, int defaultValue);
KVSHARE_API CString GetDebugRegistryVal(const CString& name, const CString& defaultValue);
KVSHARE_API int GetVersionIndependentDebugRegistryVal(const CString& name, int defaultValue);

// The switch "LegacyTurnDataCorrection": sets found to 1 and value to its number; both to 0 if it is missing.
KVSHARE_API void GetLegacyTurnDataRegistryData(int& found, int& value);

KVSHARE_API int GetIsToolBlockEnabled();
KVSHARE_API int GetIsPrimeTurningForFaceFinishRegSupport();
KVSHARE_API int GetIsPrimeTurningSupportsAllStrategies();
KVSHARE_API int GetIsPrimeTurningSupportsRetractDistance();

KVSHARE_API int GetIsWIPImprovementEnabled();
KVSHARE_API int GetIsWIPInvalidateOnTPDeleteEnabled();
KVSHARE_API int GetIs3AxisFeatImprovementEnabled();
KVSHARE_API int GetIsDynamicWIPDisplayEnabled();

// Always 1. No registry read.
KVSHARE_API int qf_getIsCRF1363ShareRegistryEnabled();
KVSHARE_API int GetIsPrimeTurningRegSupport();
KVSHARE_API int IsPrimeTurnSupported();

// The row of kStartSwitches with that name; an unknown name does not compile.
consteval FeatureSwitch StartSwitch(TextView name) {
  std::size_t row = 0;
  while (name != kStartSwitches.at(row).name) ++row;
  return kStartSwitches[row];
}
// Writes the default to the user's hive if the switch is missing.
void WriteBackStartSwitch(const FeatureSwitch& feature);

// Make the host's embedded web control emulate browser mode 11001, unless the registry has a mode for it. The main
// module calls them.
KVSHARE_API void SetSolidWorksExeNameToRegistry();
KVSHARE_API void SetSolidEdgeExeNameToRegistry();
