// The environment: its life, the order and the write-backs of its start, what it finds.
#include "share/env/app_env.h"

#include <gtest/gtest.h>

#include <regex>

#include "framework/resources.h"
#include "platform/process.h"
#include "share/env/feature_switches.h"
#include "share/env/registry_access.h"
#include "share/env/registry_keys.h"
#include "tests/registry_calls.h"

namespace {

class Environment : public testing::Test {
 protected:
  void SetUp() override {
    CloseAppEnv();
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
  }
  void TearDown() override {
    CloseAppEnv();
    for (LPCTSTR variable : {_T("_KVDEBUG"), _T("KV_TESTING")}) SetEnvironmentVariableW(variable, nullptr);
  }
};

bool EndsWith(const CString& text, const CString& end) { return text.Right(end.GetLength()) == end; }

}  // namespace

TEST_F(Environment, IsBuiltOnceAndAfreshAfterClosing) {
  EXPECT_EQ(CKVEnvApp::m_IsEnvObjectCreated, 0);
  CKVEnvApp* env = InitAppEnv();
  ASSERT_NE(env, nullptr);
  EXPECT_EQ(CKVEnvApp::m_IsEnvObjectCreated, 1);
  EXPECT_EQ(CKVEnvApp::m_envAppInstance, env);
  EXPECT_EQ(AppEnv(), env);
  EXPECT_EQ(CKVEnvApp::Instance(), env);
  env->SetTechDBProcessID(5);
  env->SetIs3dSetUpSheet(1);
  const CKVEnvApp copy = *env;
  CloseAppEnv();
  EXPECT_EQ(CKVEnvApp::m_envAppInstance, nullptr);
  EXPECT_EQ(CKVEnvApp::m_IsEnvObjectCreated, 0);
  CloseAppEnv();
  EXPECT_EQ(AppEnv()->GetTechDBProcessID(), 0xFFFFFFFFu);
  EXPECT_EQ(AppEnv()->IsXMLReportwithRelativePathsNeeded(), 1);
  EXPECT_EQ(copy.GetTechDBProcessID(), 5u) << "which outlives it";
  EXPECT_EQ(copy.IsXMLReportwithRelativePathsNeeded(), 0);
}

TEST_F(Environment, SwitchesAreWrittenBackInOrder) {
  AppEnv();
  const std::vector<std::pair<LPCTSTR, int>> rows = {{_T("ShowCustomChuckOptions"), 1},
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
                                                     {_T("PostingPerformanceImprovements"), 1}};
  kvtest::Key key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, kVersionDebugKey, 0, KEY_READ, &key), ERROR_SUCCESS);
  const std::vector<kvtest::Text> names = kvtest::ValueNames(key);
  ASSERT_EQ(names.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(names[i], rows[i].first);
    EXPECT_EQ(kvtest::Number(key, rows[i].first), rows[i].second) << ToUtf8(CString(rows[i].first));
  }
}

TEST_F(Environment, SwitchesSetByAUserStay) {
  for (const FeatureSwitch& row : kStartSwitches)
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionDebugKey, row.name, 5);
  AppEnv();
  for (const FeatureSwitch& row : kStartSwitches)
    EXPECT_EQ(GetDebugRegistryVal(row.name, -1), 5) << ToUtf8(CString(row.name));
}

TEST_F(Environment, ArcFacetLengthGoesBackToItsDefaultInAnExistingKey) {
  constexpr LPCTSTR kName = _T("LinearLengthForArcFacet");
  const auto started = [&] {
    CloseAppEnv();
    AppEnv();
    return ToUtf8(GetRegSettingStringValue(HKEY_CURRENT_USER, kPostDataKey, kName));
  };
  EXPECT_EQ(started(), "");
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kPostDataKey, _T("other"), 1);
  EXPECT_EQ(started(), "0.01");
  SetRegistryValueForString(HKEY_CURRENT_USER, kPostDataKey, kName, _T("0.5"));
  EXPECT_EQ(started(), "0.01");
  SetRegistryValueForString(HKEY_CURRENT_USER, kPostDataKey, kName, _T("5"));
  EXPECT_EQ(started(), "5") << "one character fits into four bytes";
}

TEST_F(Environment, LiesWhereTheLibraryWasLoadedFrom) {
  const CKVEnvApp& env = *AppEnv();
  const CString install = env.GetKVDrive() + env.GetKVPath();
  EXPECT_EQ(env.GetKVModuleName(), _T("KESTROVAu"));
  EXPECT_EQ(env.GetKVPath()[0], '\\');
  EXPECT_TRUE(EndsWith(env.GetKVPath(), _T("\\lib\\"))) << ToUtf8(env.GetKVPath());
  EXPECT_EQ(env.GetKVPath().Find(_T("..")), -1) << ToUtf8(env.GetKVPath());
  EXPECT_EQ(env.GetKVModuleExt()[0], '.');
  const struct {
    CString path;
    LPCTSTR rest;
  } rows[] = {{env.GetKVResourceDllPath(), _T("lang\\English\\KVRESu.DLL")},
              {env.GetKVDebugResourceDllPath(), _T("lang\\English\\KVDEBUGRESu.DLL")},
              {env.GetKVImagesResourceDllPath(), _T("KVImagesResu.dll")},
              {env.GetKVAPIDllPath(), _T("KVAPIu.DLL")},
              {env.GetKVHelpPath(), _T("lang\\English\\")},
              {env.GetVisiDllPath(), _T("MS\\")},
              {env.GetEDConnectorDllPath(), _T("eDConnector.DLL")},
              {env.GetEDConnectorPngDllPath(), _T("libpng13.dll")},
              {env.GetKVEDConnectorDllPath(), _T("KVEDConnectoru.DLL")}};
  for (const auto& row : rows) EXPECT_EQ(ToUtf8(row.path), ToUtf8(install + row.rest));
  EXPECT_FALSE(env.GetUserNameW().IsEmpty());
}

TEST_F(Environment, LinksTheLanguageIntoTheResourceChain) {
  const int links = GetDynLinkLibraryCount();
  InitShareDll();
  EXPECT_EQ(GetDynLinkLibraryCount(), links + 1);
  for (int start = 0; start < 2; ++start) {
    AppEnv();
    CString text;
    EXPECT_TRUE(text.LoadString(1));
    EXPECT_EQ(text, _T("Kestrova"));
    CloseAppEnv();
  }
}

TEST_F(Environment, FlagsOfTheProcessEnvironment) {
  const struct {
    LPCTSTR value;
    int expected;
  } rows[] = {{nullptr, 0},    {_T("YES"), 1}, {_T("yes"), 1},
              {_T("YES "), 0}, {_T("1"), 0},   {_T("YESYESYESYESYESYESYESYESYESYESYESYESYESYESYESYESYESYES"), 0}};
  for (const auto& row : rows) {
    CloseAppEnv();
    SetEnvironmentVariableW(_T("_KVDEBUG"), row.value);
    CKVEnvApp* env = AppEnv();
    EXPECT_EQ(env->IsKVDebugEnabled(), row.expected);
    SetEnvironmentVariableW(_T("_KVDEBUG"), _T("YES"));
    EXPECT_EQ(env->IsKVDebugEnabled(), row.expected) << "read at start only";
    SetEnvironmentVariableW(_T("KV_TESTING"), row.value);
    EXPECT_EQ(env->IsKVRunningInTestMode(), 0);
    env->ConfigureForTesting(1);
    EXPECT_EQ(env->IsKVRunningInTestMode(), row.expected) << "read at each call";
    env->ConfigureForTesting(0);
    EXPECT_EQ(env->IsKVRunningInTestMode(), 0);
  }
}

TEST_F(Environment, ReadsItsRegistryValue) {
  EXPECT_EQ(AppEnv()->GetMultiSurfaceByID(), 0);
  CloseAppEnv();
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionKey, _T("MultiSurfaceByID"), 3);
  EXPECT_EQ(AppEnv()->GetMultiSurfaceByID(), 3);
}

TEST_F(Environment, StartsOnARegistryThatCantBeUsed) {
  const kvtest::ScratchFolder folder;
  const kvtest::RegistryIn unusable(folder.Write("a file", "") / "below");
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_TECHDB_FAILED) << "no forms file, and nobody to ask";
  EXPECT_EQ(AppEnv()->GetMultiSurfaceByID(), 0);
  EXPECT_FALSE(AppEnv()->GetKVPath().IsEmpty());
}

TEST_F(Environment, TellsDateAndTime) {
  const CKVEnvApp& env = *AppEnv();
  EXPECT_TRUE(std::regex_match(ToUtf8(env.GetCurrentDate()), std::regex(R"([01]\d/[0-3]\d/2\d\d\d)")));
  EXPECT_TRUE(std::regex_match(ToUtf8(env.GetTickCount()), std::regex(R"([0-2]\d:[0-5]\d)")));
}
