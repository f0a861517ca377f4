// The registry keys of this release. Support instructions name them: don't change them.
#pragma once

#include "platform/types.h"

inline constexpr LPCTSTR kProductRoot = _T("Software\\Zemlor\\Kestrova\\");
inline constexpr LPCTSTR kVersionName = _T("Kestrova 2024x64");

// Data of this release only: a new release starts with an empty key. In both hives.
inline constexpr LPCTSTR kVersionKey = _T("Software\\Zemlor\\Kestrova\\Kestrova 2024x64");
// Switches of this release; switches that survive an upgrade. In the user's hive.
inline constexpr LPCTSTR kVersionDebugKey = _T("Software\\Zemlor\\Kestrova\\Kestrova 2024x64\\Debug");
inline constexpr LPCTSTR kProductDebugKey = _T("Software\\Zemlor\\Kestrova\\Debug");
// Data of the post processor. Read from the user's hive, then from the machine's.
inline constexpr LPCTSTR kPostDataKey = _T("Software\\Zemlor\\Kestrova\\PostData");
// In the machine's hive.
inline constexpr LPCTSTR kSetupSheetKey = _T("Software\\Zemlor\\Kestrova\\SetupSheet");
// Switches of the EDM application. In the user's hive.
inline constexpr LPCTSTR kEdmDebugKey = _T("Software\\Zemlor\\Kestrova\\EDMApp 2024\\Debug");
// The host CAD's key. Only read.
inline constexpr LPCTSTR kHostGeneralKey = _T("Software\\Solidworks\\General");
inline constexpr LPCTSTR kBrowserEmulationKey =
    _T("SOFTWARE\\Microsoft\\Internet Explorer\\Main\\FeatureControl\\FEATURE_BROWSER_EMULATION");
