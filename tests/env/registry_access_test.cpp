// Raw registry access and the switches that are read on demand.
#include "share/env/registry_access.h"

#include <gtest/gtest.h>

#include "share/env/feature_switches.h"
#include "share/env/registry_keys.h"
#include "tests/registry_calls.h"

namespace {

constexpr LPCTSTR kPath = _T("Software\\AccessTest");

bool Exists(LPCTSTR path) { return kvtest::Open(HKEY_CURRENT_USER, path) == ERROR_SUCCESS; }

class RegistryAccess : public testing::Test {
 protected:
  void SetUp() override {
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, _T("Software"));
  }
};

}  // namespace

TEST_F(RegistryAccess, MissingNumberIsOneAndSaysSo) {
  int found = 7;
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v")), 1);
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), &found), 1);
  EXPECT_EQ(found, 0);
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), nullptr), 1);
  EXPECT_FALSE(Exists(kPath));
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), 0);
  EXPECT_TRUE(Exists(kPath));
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), &found), 0);
  EXPECT_EQ(found, 1);
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), -5);
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v")), -5);
  kvtest::PutText(HKEY_CURRENT_USER, kPath, _T("long"), _T("0.01"));
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("long"), &found), 1);
  EXPECT_EQ(found, 0) << "more than four bytes";
}

TEST_F(RegistryAccess, TextIsWrittenWithoutTerminatorIntoAnExistingKeyOnly) {
  EXPECT_EQ(SetRegistryValueForString(HKEY_CURRENT_USER, kPath, _T("v"), _T("abc")), 0);
  EXPECT_FALSE(Exists(kPath));
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("other"), 1);
  EXPECT_EQ(SetRegistryValueForString(HKEY_CURRENT_USER, kPath, _T("v"), _T("abc")), 1);
  EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kPath, _T("v")), (kvtest::Stored{REG_SZ, kvtest::Wide(u"abc")}));
  EXPECT_EQ(GetRegSettingStringValue(HKEY_CURRENT_USER, kPath, _T("v")), _T("abc"));
  RegSettingDeleteValue(HKEY_CURRENT_USER, kPath, _T("v"));
  RegSettingDeleteValue(HKEY_CURRENT_USER, _T("Software\\Nowhere"), _T("v"));
  EXPECT_EQ(GetRegSettingStringValue(HKEY_CURRENT_USER, kPath, _T("v")), _T(""));
  EXPECT_FALSE(Exists(_T("Software\\Nowhere")));
}

TEST_F(RegistryAccess, TextHasAtMost999Characters) {
  for (const int length : {0, 1, 998, 999, 1000, 1200}) {
    kvtest::PutText(HKEY_CURRENT_USER, kPath, _T("v"), CString(u'x', length));
    EXPECT_EQ(GetRegSettingStringValue(HKEY_CURRENT_USER, kPath, _T("v")).GetLength(), length < 1000 ? length : 0);
  }
}

TEST_F(RegistryAccess, SwitchesReadTheirKeyAndDefault) {
  const struct {
    int (*read)();
    LPCTSTR path;
    LPCTSTR name;
    int defaultValue;
  } rows[] = {
      {GetIsToolBlockEnabled, kVersionDebugKey, _T("EnableToolBlock"), 1},
      {GetIsPrimeTurningForFaceFinishRegSupport, kVersionDebugKey, _T("PrimeTurningSupportForFaceFinish"), 0},
      {GetIsPrimeTurningSupportsAllStrategies, kVersionDebugKey, _T("PrimeTurningSupportsAllStrategies"), 0},
      {GetIsPrimeTurningSupportsRetractDistance, kVersionDebugKey, _T("PrimeTurningSupportsRetractDistance"), 0},
      {GetIsWIPImprovementEnabled, kProductDebugKey, _T("EnableWIPImprovement"), 1},
      {GetIsWIPInvalidateOnTPDeleteEnabled, kProductDebugKey, _T("EnableWIPInvalidateOnTPDelete"), 1},
      {GetIs3AxisFeatImprovementEnabled, kProductDebugKey, _T("Enable3AxisFeatImprovement"), 1},
      {GetIsDynamicWIPDisplayEnabled, kProductDebugKey, _T("EnableDynamicWIPDisplay"), 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.read(), row.defaultValue) << ToUtf8(CString(row.name));
    for (const int value : {0, 5}) {
      SetRegSettingDwordValue(HKEY_CURRENT_USER, row.path, row.name, value);
      EXPECT_EQ(row.read(), value) << ToUtf8(CString(row.name));
    }
  }
  EXPECT_EQ(qf_getIsCRF1363ShareRegistryEnabled() + GetIsPrimeTurningRegSupport() + IsPrimeTurnSupported(), 3);
}

TEST_F(RegistryAccess, DebugValuesHaveTheCallersDefault) {
  EXPECT_EQ(GetDebugRegistryVal(_T("n"), 42), 42);
  EXPECT_EQ(GetDebugRegistryVal(_T("s"), CString(_T("d"))), _T("d"));
  EXPECT_EQ(GetVersionIndependentDebugRegistryVal(_T("n"), 43), 43);
  EXPECT_FALSE(Exists(_T("Software")));
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("n"), 0);
  kvtest::PutText(HKEY_CURRENT_USER, kVersionDebugKey, _T("s"), _T("text"));
  EXPECT_EQ(GetDebugRegistryVal(_T("n"), 42), 0);
  EXPECT_EQ(GetDebugRegistryVal(_T("s"), CString(_T("d"))), _T("text"));
  int found = 7, value = 7;
  GetLegacyTurnDataRegistryData(found, value);
  EXPECT_EQ(found, 0);
  EXPECT_EQ(value, 0);
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, _T("LegacyTurnDataCorrection"), 3);
  GetLegacyTurnDataRegistryData(found, value);
  EXPECT_EQ(found, 1);
  EXPECT_EQ(value, 3);
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
  EXPECT_EQ(CheckAccessVersionInstalled(16, 1), 0);
  kvtest::PutText(HKEY_LOCAL_MACHINE, _T("Software\\Wow6432Node\\Microsoft\\Office\\16.0\\Access\\InstallRoot"),
                  _T("Path"), _T(""));
  EXPECT_EQ(CheckAccessVersionInstalled(16, 1), 1);
  EXPECT_EQ(CheckAccessVersionInstalled(16, 0), 0);
}

TEST_F(RegistryAccess, UnusableRegistryGivesDefaults) {
  const kvtest::ScratchFolder folder;
  const kvtest::RegistryIn unusable(folder.Write("a file", "") / "below");
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v"), 5);
  EXPECT_EQ(GetRegSettingDwordValue(HKEY_CURRENT_USER, kPath, _T("v")), 1);
  EXPECT_EQ(SetRegistryValueForString(HKEY_CURRENT_USER, kPath, _T("v"), _T("x")), 0);
  EXPECT_EQ(GetDebugRegistryVal(_T("n"), 42), 42);
  EXPECT_EQ(GetIsWIPImprovementEnabled(), 1);
}
