// The environment: its life, the switches that its start writes back, its paths and flags, and the user's language:
// from the system, by name, aligned to the host.
#include "share/env/app_env.h"

#include <fmt/format.h>

#include <sstream>

#include "framework/resources.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "share/core/version_info.h"
#include "share/env/feature_switches.h"
#include "share/env/language_choice.h"
#include "tests/env/clean_environment.h"

namespace {

class Environment : public kvtest::CleanEnvironment {
 protected:
  void TearDown() override {
    CleanEnvironment::TearDown();
    for (LPCTSTR variable : {_T("_KVDEBUG"), _T("KV_TESTING"), _T("LC_ALL")})
      SetEnvironmentVariableW(variable, nullptr);
    SetSolidWorksLangName(_T(""));
  }
};

class Language : public Environment {
 protected:
  // Starts the environment for a user of that system language; gives the folder, number and editor's code chosen.
  static std::string Chosen(const char* locale) {
    CloseAppEnv();
    SetEnvironmentVariableW(_T("LC_ALL"), CString(locale) + _T(".UTF-8"));
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(env.GetCIMCOEditorCmdArg(), _T("/lang=") + env.GetLanguageForSIMCO());
    return ToUtf8(env.GetKVDefDataRelPath()) + " " + std::to_string(env.GetTechDBLang()) + " " +
           ToUtf8(env.GetLanguageForSIMCO());
  }
};

}  // namespace

TEST_F(Environment, IsBuiltOnceAndAfreshAfterClosing) {
  EXPECT_EQ(CKVEnvApp::m_IsEnvObjectCreated, 0);
  CKVEnvApp* env = InitAppEnv();
  ASSERT_NE(env, nullptr);
  EXPECT_EQ(CKVEnvApp::m_IsEnvObjectCreated, 1);
  EXPECT_EQ(CKVEnvApp::m_envAppInstance, env);
  EXPECT_EQ(AppEnv(), env);
  env->SetTechDBProcessID(5);
  env->SetIs3dSetUpSheet(1);
  const CKVEnvApp copy = *env;
  CloseAppEnv();
  EXPECT_EQ(CKVEnvApp::m_envAppInstance, nullptr);
  EXPECT_EQ(CKVEnvApp::m_IsEnvObjectCreated, 0);
  CloseAppEnv();
  EXPECT_EQ(AppEnv()->GetTechDBProcessID(), 0xFFFFFFFFu);
  EXPECT_EQ(AppEnv()->IsXMLReportwithRelativePathsNeeded(), 1);
  EXPECT_EQ(copy.GetTechDBProcessID(), 5u) << "a copy outlives the environment";
  EXPECT_EQ(copy.IsXMLReportwithRelativePathsNeeded(), 0);
}

TEST_F(Environment, MissingSwitchesAreWrittenBackInOrderAndOthersStay) {
  AppEnv();
  const kvtest::Key key(HKEY_CURRENT_USER, kVersionDebugKey, KEY_ALL_ACCESS);
  std::string written;
  for (const kvtest::Text& name : kvtest::ValueNames(key))
    written += ToUtf8(CString(name.c_str())) + " " + std::to_string(kvtest::Number(key, name.c_str())) + "\n";
  EXPECT_EQ(written,
            "ShowCustomChuckOptions 1\nCalMaxFitCirInThreads 0\nBAxisContinuousSupport 4\n"
            "ContinuousBAxisTlpKeepArcMoves 0\nBAxisFaceFinishOperationSupport 0\n"
            "NewSetSpindleDirForTurnMillTurnMachineSupport 1\nShowHideToolpathSegmentsSupport 1\n"
            "ColorToolpathSegmentsSupport 1\nColorHiddenTlpMoveSupport 1\nStepThruTlpCRFSupport 1\n"
            "CRF1478TurnSupport 1\nCRF1478For2axSupport 1\nGetWIPArcSupport 1\nPostingPerformanceImprovements 1\n");
  CloseAppEnv();
  for (const FeatureSwitch& row : kStartSwitches) kvtest::SetNumber(key, row.name, 5);
  AppEnv();
  for (const FeatureSwitch& row : kStartSwitches)
    EXPECT_EQ(kvtest::Number(key, row.name), 5) << ToUtf8(CString(row.name));
}

TEST_F(Environment, ArcFacetLengthGoesBackToItsDefaultInAnExistingKey) {
  constexpr LPCTSTR kName = _T("LinearLengthForArcFacet");
  const auto started = [&] {
    CloseAppEnv();
    AppEnv();
    return Stored(HKEY_CURRENT_USER, kPostDataKey, kName);
  };
  EXPECT_EQ(started(), "");
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kPostDataKey, _T("other"), 1);
  EXPECT_EQ(started(), "0.01");
  SetRegistryValueForString(HKEY_CURRENT_USER, kPostDataKey, kName, _T("0.5"));
  EXPECT_EQ(started(), "0.01");
  SetRegistryValueForString(HKEY_CURRENT_USER, kPostDataKey, kName, _T("5"));
  EXPECT_EQ(started(), "5") << "one character fits into four bytes";
}

TEST_F(Environment, PathsAreBelowTheInstallFolderOrTheFolderOfData) {
  kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath"), _T("C:\\D"));
  CKVEnvApp& env = *AppEnv();
  env.SetPartFileNameforRelativePathCreation(_T("part.png"));
  const std::string install = Install(), language = install + "lang\\English\\";
  const std::string above = install.substr(0, install.rfind('\\', install.size() - 2) + 1);
  CString withoutDrive;
  KVGetInstallPath(withoutDrive);
  EXPECT_EQ(withoutDrive, env.GetKVPath());
  EXPECT_EQ(withoutDrive[0], '\\');
  EXPECT_EQ(withoutDrive.Right(5), _T("\\lib\\"));
  EXPECT_EQ(withoutDrive.Find(_T("..")), -1) << install;
  EXPECT_EQ(env.GetKVModuleExt(), _T(".so"));
  const std::pair<CString, std::string> rows[] = {
      {env.GetKVModuleName(), "KESTROVAu"},
      {env.GetKVResourceDllPath(), language + "KVRESu.DLL"},
      {env.GetKVDebugResourceDllPath(), language + "KVDEBUGRESu.DLL"},
      {env.GetKVImagesResourceDllPath(), install + "KVImagesResu.dll"},
      {env.GetKVAPIDllPath(), install + "KVAPIu.DLL"},
      {env.GetKVHelpPath(), language},
      {env.GetVisiDllPath(), install + "MS\\"},
      {env.GetEDConnectorDllPath(), install + "eDConnector.DLL"},
      {env.GetEDConnectorPngDllPath(), install + "libpng13.dll"},
      {env.GetKVEDConnectorDllPath(), install + "KVEDConnectoru.DLL"},
      {env.GetKV5AxisDllPath(), language + "KV5AxisResu.dll"},
      {env.GetEDMResourceDllPath(), language},
      {env.GetUtilitiesDllPath(), install + "KVUtilities\\"},
      {env.GetUtilitiesDllName(), "KVUtilitiesu.dll"},
      {env.GetKVAMHelpPath(), language + "AM.chm"},
      {CKVVersionInfo::OnKestrovaAllPDFFilePath(), language + "Manuals\\"},
      {env.GetWhatsNewPDFFilePath(), language + "Manuals\\kv_whats_new.pdf"},
      {env.GetTutorialsPath(), language + "Manuals"},
      {env.GetTechDBAppPath(), install + "TechDBApp\\"},
      {env.GetKVTechDBFormsPath(), above + "TechDBApp\\TechDB-App.exe"},
      {env.GetCIMCOEditorPath(), above + "nceditor\\KestrovaNCEditor.exe"},
      {CKVVersionInfo::OnKestrovaTaskPaneINIFFilePath(), "C:\\D\\KVTaskPaneWebCtrl.ini"},
      {CKVVersionInfo::GetTaskPaneTabStringName(), "KVTASKPANE.KVTaskPaneWebCtrlVS2019.6"},
      {env.GetTechDBConfigFilePath(), "C:\\D\\TechDB\\"},
      {env.GetDefaultSQLiteDBPath(), "C:\\D\\TechDB\\TechDB.kvdb"},
      {env.GetKVDefaultToolInsertPath(), "C:\\D\\lang\\English\\"},
      {env.SetKVDefaultTechDBPath(), "C:\\D\\lang\\English\\" + ToUtf8(env.GetKVTechDBName())},
      {env.GetKVTechDBPath(), "C:\\D\\lang\\English\\" + ToUtf8(env.GetKVTechDBName())},
      {env.GetXMLReportRelativePathInfo(), "Setup_Sheet_Images\\part.png"},
  };
  for (const auto& [path, expected] : rows) EXPECT_EQ(ToUtf8(path), expected);
}

TEST_F(Environment, RecordingsFolderIsMadeIfItCanBe) {
  const kvtest::ScratchFolder folder;
  const CString data(ProductPathFromSystem(folder.Path().string()).c_str());
  for (const bool canBe : {false, true}) {
    const CString path = canBe ? data : data + _T("\\missing");
    kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath"), path);
    EXPECT_EQ(AppEnv()->GetSimulationRecordingFolderPath(), path + _T("\\SimulationRecordings\\"));
    EXPECT_EQ(std::filesystem::is_directory(folder.Path() / "SimulationRecordings"), canBe);
  }
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

TEST_F(Environment, DebugFlagIsReadAtStartAndTestModeAtEachCall) {
  const std::pair<CString, int> rows[] = {{_T(""), 0}, {_T("yes"), 1}, {_T("YES "), 0}, {CString(_T('Y'), 50), 0}};
  for (const auto& [value, expected] : rows) {
    CloseAppEnv();
    SetEnvironmentVariableW(_T("_KVDEBUG"), value);
    CKVEnvApp* env = AppEnv();
    EXPECT_EQ(env->IsKVDebugEnabled(), expected);
    SetEnvironmentVariableW(_T("_KVDEBUG"), _T("YES"));
    EXPECT_EQ(env->IsKVDebugEnabled(), expected);
    SetEnvironmentVariableW(_T("KV_TESTING"), value);
    EXPECT_EQ(env->IsKVRunningInTestMode(), 0);
    env->ConfigureForTesting(1);
    EXPECT_EQ(env->IsKVRunningInTestMode(), expected);
  }
}

TEST_F(Environment, StartsOnARegistryThatCantBeUsed) {
  SetRegSettingDwordValue(HKEY_CURRENT_USER, kVersionKey, _T("MultiSurfaceByID"), 3);
  EXPECT_EQ(AppEnv()->GetMultiSurfaceByID(), 3);
  CloseAppEnv();
  const kvtest::ScratchFolder folder;
  const kvtest::RegistryIn unusable(folder.Write("a file", "") / "below");
  EXPECT_EQ(AppEnv()->GetConfigDataUseStatus(), 1) << "what the start could not save counts as saved";
  EXPECT_EQ(AppEnv()->GetMultiSurfaceByID(), 0);
  EXPECT_FALSE(AppEnv()->GetKVPath().IsEmpty());
  EXPECT_FALSE(AppEnv()->GetUserNameW().IsEmpty());
}

TEST_F(Language, EveryPrimaryAndSubLanguageHasItsNumber) {
  const std::map<int, int> any = {{5, 13}, {7, 1},  {8, 14},  {10, 3}, {12, 2}, {16, 7},
                                  {17, 4}, {18, 8}, {21, 10}, {25, 9}, {31, 11}};
  const std::map<std::pair<int, int>, int> single = {{{4, 1}, 6}, {{4, 3}, 6}, {{4, 5}, 6},
                                                     {{4, 2}, 5}, {{4, 4}, 5}, {{22, 1}, 12}};
  for (int primary = 0; primary < 1024; ++primary) {
    for (int sub = 0; sub < 64; ++sub) {
      const auto all = any.find(primary);
      const auto one = single.find({primary, sub});
      const int expected = all != any.end() ? all->second : one != single.end() ? one->second : 0;
      ASSERT_EQ(GetLanguageOfSystem(WORD(sub << 10 | primary)), expected) << primary << ", " << sub;
    }
  }
}

TEST_F(Language, AutomaticFollowsTheSystemEvenWithoutTheFolder) {
  std::string chosen;  // folder, number, editor's code, and the number that the folder's name gives for the database
  for (const char* locale : {"en_US", "de_AT", "fr_CA", "es_MX", "ja_JP", "zh_CN", "zh_TW", "it_IT", "ko_KR", "ru_RU",
                             "pl_PL", "tr_TR", "pt_BR", "cs_CZ", "el_GR", "pt_PT", "sv_SE"}) {
    chosen += Chosen(locale);
    const CString folder = AppEnv()->GetKVDefDataRelPath(), name = folder.Mid(5, folder.GetLength() - 6);
    chosen += fmt::format(" {}\n", int(AppEnv()->GetCorrespondingDBLangName(name)));
  }
  EXPECT_EQ(chosen,
            "lang\\English\\ 0 en-US 0\nlang\\German\\ 1 de-DE 1\nlang\\French\\ 2 fr-FR 2\n"
            "lang\\Spanish\\ 3 es-ES 3\nlang\\Japanese\\ 4 ja-JP 4\nlang\\Chinese\\ 5 zh-CN 5\n"
            "lang\\Chinese-Traditional\\ 6 zh-CHT 6\nlang\\Italian\\ 7 it-IT 7\nlang\\Korean\\ 8 ko-KR 8\n"
            "lang\\Russian\\ 9 ru-RU 9\nlang\\Polish\\ 10 pl-PL 10\nlang\\Turkish\\ 11 en-US 11\n"
            "lang\\Portuguese-Brazilian\\ 12 pt-BR 12\nlang\\Czech\\ 13 cs-CZ 13\nlang\\Greek\\ 14 en-US 0\n"
            "lang\\English\\ 0 en-US 0\nlang\\English\\ 0 en-US 0\n");
  EXPECT_EQ(AppEnv()->GetCorrespondingDBLangName(_T("german")), QF_DBLANG_ENGLISH) << "names are compared with case";
  for (const int unknown : {15, -1}) EXPECT_EQ(GetLanguageFolder(QFDatabaseLang_e(unknown)), _T("lang\\English\\"));
  for (const int english : {1, 0, 2}) {
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kHostGeneralKey, _T("Use English language"), english);
    EXPECT_EQ(Chosen("de_AT"), english == 1 ? "lang\\English\\ 0 en-US" : "lang\\German\\ 1 de-DE");
  }
}

// The library under test has the folders of German and French, and no others.
TEST_F(Language, NameCountsOnlyWithItsResourceLibrary) {
  const std::pair<CString, const char*> rows[] = {{_T("French"), "lang\\French\\ 2 fr-FR"},
                                                  {_T("Spanish"), "lang\\English\\ 0 en-US"},
                                                  {_T(""), "lang\\English\\ 0 en-US"},
                                                  {_T("..\\lang\\French"), "lang\\..\\lang\\French\\ 0 en-US"},
                                                  {CString(_T('x'), 300), "lang\\English\\ 0 en-US"}};
  for (const auto& [name, chosen] : rows) {
    kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("Language"), name);
    EXPECT_EQ(Chosen("ja_JP"), chosen) << ToUtf8(name);
  }
}

TEST_F(Language, AlignsToTheSwitchOrTheHost) {
  std::istringstream rows(
      "english English GERMAN German French French japanese Japanese italian Italian polish Polish russian Russian "
      "spanish Spanish turkish Turkish czech Czech korean Korean portugese-brazilian Portuguese-Brazilian "
      "chinese Chinese-Traditional chinese-simplified Chinese portuguese-brazilian before");
  for (std::string host, wanted; rows >> host >> wanted;) {
    SetSolidWorksLangName(host.c_str());
    CString language(_T("before"));
    GetLangAlignedToSWLang(language);
    EXPECT_EQ(ToUtf8(language), wanted);
  }
  kvtest::PutText(HKEY_CURRENT_USER, kVersionDebugKey, _T("BrenmarkLanguage"), _T("Martian"));
  CString language;
  GetLangAlignedToSWLang(language);
  EXPECT_EQ(language, _T("Martian"));
}
