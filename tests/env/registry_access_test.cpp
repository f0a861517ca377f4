// Access to single registry values, and the switches that are read at each call.
#include "share/core/registry_access.h"

#include "share/env/feature_switches.h"
#include "tests/env/clean_environment.h"

namespace {

constexpr LPCTSTR kPath = _T("Software\\AccessTest");

bool Exists(LPCTSTR path) { return kvtest::Open(HKEY_CURRENT_USER, path) == ERROR_SUCCESS; }

using RegistryAccess = kvtest::CleanEnvironment;

}  // namespace

TEST_F(RegistryAccess, MissingNumberIsOneAndNotFound) {
  int found = 7;
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v")), 1);
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), &found), 1);
  EXPECT_EQ(found, 0);
  EXPECT_FALSE(Exists(kPath));
  for (const int value : {0, -5}) {
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), value);
    EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), &found), value);
    EXPECT_EQ(found, 1);
  }
  kvtest::PutText(HKEY_CURRENT_USER, kPath, _T("long"), _T("0.01"));
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("long"), &found), 1);
  EXPECT_EQ(found, 0) << "more than four bytes";
}

TEST_F(RegistryAccess, TextIsWrittenWithoutTerminatorIntoAnExistingKeyOnly) {
  EXPECT_EQ(SetRegistryValueForString(HKEY_CURRENT_USER, kPath, _T("v"), _T("abc")), 0);
  EXPECT_FALSE(Exists(kPath));
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("other"), 1);
  EXPECT_EQ(SetRegistryValueForString(HKEY_CURRENT_USER, kPath, _T("v"), _T("abc")), 1);
#ifdef __linux__  // Windows stores a terminator that follows in memory
  EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kPath, _T("v")), (kvtest::Stored{REG_SZ, kvtest::Wide(_T("abc"))}));
#endif
  EXPECT_EQ(GetRegSettingStringValue(HKEY_CURRENT_USER, kPath, _T("v")), _T("abc"));
  RegSettingDeleteValue(HKEY_CURRENT_USER, kPath, _T("v"));
  EXPECT_EQ(GetRegSettingStringValue(HKEY_CURRENT_USER, kPath, _T("v")), _T(""));
  RegSettingDeleteValue(HKEY_CURRENT_USER, _T("Software\\Nowhere"), _T("v"));
  EXPECT_FALSE(Exists(_T("Software\\Nowhere")));
}

TEST_F(RegistryAccess, TextHasAtMost999Characters) {
  for (const int length : {999, 1000, 1200}) {
    kvtest::PutText(HKEY_CURRENT_USER, kPath, _T("v"), CString(_T('x'), length));
    EXPECT_EQ(GetRegSettingStringValue(HKEY_CURRENT_USER, kPath, _T("v")).GetLength(), length < 1000 ? length : 0);
  }
}

TEST_F(RegistryAccess, SwitchesReadTheirValueOrTheDefault) {
  const std::tuple<int (*)(), LPCTSTR, LPCTSTR, int> rows[] = {
      {GetIsToolBlockEnabled, kVersionDebugKey, _T("EnableToolBlock"), 1},
      {GetIsPrimeTurningForFaceFinishRegSupport, kVersionDebugKey, _T("PrimeTurningSupportForFaceFinish"), 0},
      {GetIsPrimeTurningSupportsAllStrategies, kVersionDebugKey, _T("PrimeTurningSupportsAllStrategies"), 0},
      {GetIsPrimeTurningSupportsRetractDistance, kVersionDebugKey, _T("PrimeTurningSupportsRetractDistance"), 0},
      {GetIsWIPImprovementEnabled, kProductDebugKey, _T("EnableWIPImprovement"), 1},
      {GetIsWIPInvalidateOnTPDeleteEnabled, kProductDebugKey, _T("EnableWIPInvalidateOnTPDelete"), 1},
      {GetIs3AxisFeatImprovementEnabled, kProductDebugKey, _T("Enable3AxisFeatImprovement"), 1},
      {GetIsDynamicWIPDisplayEnabled, kProductDebugKey, _T("EnableDynamicWIPDisplay"), 0},
  };
  for (const auto& [read, path, name, fallback] : rows) EXPECT_EQ(read(), fallback) << ToUtf8(CString(name));
  EXPECT_FALSE(Exists(_T("Software")));
  for (const auto& [read, path, name, fallback] : rows) {
    SetRegSettingDwordValue(HKEY_CURRENT_USER, path, name, 5);
    EXPECT_EQ(read(), 5) << ToUtf8(CString(name));
  }
  EXPECT_EQ(qf_getIsCRF1363ShareRegistryEnabled() + GetIsPrimeTurningRegSupport() + IsPrimeTurnSupported(), 3);
}

TEST_F(RegistryAccess, StoredZeroAndTextWinOverTheCallersDefault) {
  EXPECT_EQ(GetDebugRegistryVal(_T("n"), 42), 42);
  EXPECT_EQ(GetDebugRegistryVal(_T("s"), CString(_T("d"))), _T("d"));
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("n"), 0);
  kvtest::PutText(HKEY_CURRENT_USER, kVersionDebugKey, _T("s"), _T("text"));
  EXPECT_EQ(GetDebugRegistryVal(_T("n"), 42), 0);
  EXPECT_EQ(GetDebugRegistryVal(_T("s"), CString(_T("d"))), _T("text"));
  for (const int stored : {0, 3}) {
    if (stored) SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("LegacyTurnDataCorrection"), stored);
    int found = 7, value = 7;
    GetLegacyTurnDataRegistryData(found, value);
    EXPECT_EQ(found, stored != 0);
    EXPECT_EQ(value, stored);
  }
}

TEST_F(RegistryAccess, BrowserModeIsWrittenOnce) {
  SetSolidWorksExeNameToRegistry();
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kBrowserEmulationKey, _T("SLDWORKS.exe")), 11001);
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kBrowserEmulationKey, _T("Edge.exe"), 5);
  SetSolidEdgeExeNameToRegistry();
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kBrowserEmulationKey, _T("Edge.exe")), 5);
}

TEST_F(RegistryAccess, FindsInstalledPrograms) {
  const CString list = _T("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\");
  kvtest::PutText(HKEY_LOCAL_MACHINE, list + _T("a"), _T("InstallLocation"), _T("C:\\NoName\\"));
  kvtest::PutText(HKEY_LOCAL_MACHINE, list + _T("b"), _T("DisplayName"), _T("My Tool"));
  kvtest::PutText(HKEY_LOCAL_MACHINE, list + _T("b"), _T("InstallLocation"), _T("C:\\Tool\\"));
  EXPECT_EQ(GetAppInstallPathFromReg(_T("MY TOOL"), 0, _T("t.exe")), _T("C:\\Tool\\t.exe"));
  EXPECT_EQ(GetAppInstallPathFromReg(_T("MY TOOL"), 1, _T("t.exe")), _T(""));
  EXPECT_EQ(GetAppInstallPathFromReg(_T(""), 0, _T("t.exe")), _T(""));
  kvtest::PutText(HKEY_LOCAL_MACHINE, _T("Software\\Wow6432Node\\Microsoft\\Office\\16.0\\Access\\InstallRoot"),
                  _T("Path"), _T(""));
  EXPECT_EQ(CheckAccessVersionInstalled(16, 1), 1);
  EXPECT_EQ(CheckAccessVersionInstalled(16, 0), 0);
}
