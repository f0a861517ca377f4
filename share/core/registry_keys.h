// Where this release's data lies in the registry. Support instructions rest on these names.
#pragma once

#include "platform/types.h"

inline constexpr LPCTSTR kProductRoot = _T("Software\\Zemlor\\Kestrova\\");
inline constexpr LPCTSTR kVersionName = _T("Kestrova 2024x64");

// Data of this release alone: a new release begins with an empty key. In both hives.
inline constexpr LPCTSTR kVersionKey = _T("Software\\Zemlor\\Kestrova\\Kestrova 2024x64");
// Switches of this release, and those that survive an upgrade. In the user's hive.
inline constexpr LPCTSTR kVersionDebugKey = _T("Software\\Zemlor\\Kestrova\\Kestrova 2024x64\\Debug");
inline constexpr LPCTSTR kProductDebugKey = _T("Software\\Zemlor\\Kestrova\\Debug");
// Post processor data, in the user's hive, then the machine's.
inline constexpr LPCTSTR kPostDataKey = _T("Software\\Zemlor\\Kestrova\\PostData");
// In the machine's hive.
inline constexpr LPCTSTR kSetupSheetKey = _T("Software\\Zemlor\\Kestrova\\SetupSheet");
// The companion product's switches.
inline constexpr LPCTSTR kEdmDebugKey = _T("Software\\Zemlor\\Kestrova\\EDMApp 2024\\Debug");
// The host CAD's own key, read only.
inline constexpr LPCTSTR kHostGeneralKey = _T("Software\\Solidworks\\General");
inline constexpr LPCTSTR kBrowserEmulationKey =
    _T("SOFTWARE\\Microsoft\\Internet Explorer\\Main\\FeatureControl\\FEATURE_BROWSER_EMULATION");
