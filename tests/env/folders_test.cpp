// Folders that a user may move: the order of the places that are read, and the repair of missing ones at start.
#include "share/settings/settings_key.h"
#include "tests/env/clean_environment.h"

namespace {

QFSettingsKey* g_settings = nullptr;

constexpr LPCTSTR kNames[] = {_T("SSImgPath"),
                              _T("SSTemplatePath"),
                              _T("SSOperationPath"),
                              _T("MachineSimulationApplicationPath"),
                              _T("SimulationMachinePath"),
                              _T("SimulationControllerPath"),
                              _T("SimulationJobPath"),
                              _T("EurekaExePath"),
                              _T("SaveStyleSheetTo"),
                              _T("ControllerPath")};

class Folders : public kvtest::CleanEnvironment {
 protected:
  void SetUp() override {
    CleanEnvironment::SetUp();
    g_settings = nullptr;
    kvtest::Register({.appSettings = [] { return g_settings; }});
    for (LPCTSTR name : kNames) tree_.AddValue(name, CString());
    auto* edm = new QFSettingsKey(_T("EDMApp"), kVersionKey);
    edm->AddValue(_T("EdmCutCondPath"), CString());
    edm->AddValue(_T("EdmPostFilePath"), CString());
    tree_.AddKey(edm);
  }

  static void PutUser(LPCTSTR name, LPCTSTR text) { kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, name, text); }
  static void PutMachine(LPCTSTR name, LPCTSTR text) { kvtest::PutText(HKEY_LOCAL_MACHINE, kVersionKey, name, text); }
  static std::string StoredForUser(LPCTSTR name) { return Stored(HKEY_CURRENT_USER, kVersionKey, name); }
  std::string InTree(LPCTSTR name) const {
    CString text;
    tree_.GetValue(name, text);
    return ToUtf8(text);
  }

  QFSettingsKey tree_;  // the settings of a host that has them: all texts are empty
};

}  // namespace

TEST_F(Folders, DataFolderComesFromTheUserThenTheMachineThenTheInstallFolder) {
  const CKVEnvApp& env = *AppEnv();
  const std::string install = Install();
  const std::tuple<LPCTSTR, LPCTSTR, std::string, std::string> rows[] = {{_T("C:\\U"), _T("C:\\M"), "C:\\U\\", "C:\\M"},
                                                                         {_T(""), _T("C:\\M\\"), "C:\\M\\", "C:\\M\\"},
                                                                         {_T(""), _T(""), install, install},
                                                                         {_T("\\"), _T("C:\\M"), "\\", "C:\\M"}};
  for (const auto& [user, machine, data, machineAfter] : rows) {
    PutUser(_T("KVDataPath"), user);
    PutMachine(_T("KVDataPath"), machine);
    EXPECT_EQ(ToUtf8(env.GetKVDataPath()), data);
    EXPECT_EQ(Stored(HKEY_LOCAL_MACHINE, kVersionKey, _T("KVDataPath")), machineAfter);
    EXPECT_EQ(StoredForUser(_T("KVDataPath")), ToUtf8(CString(user)));
  }
  PutMachine(_T("KVCommonDataPath"), _T("C:\\M"));
  EXPECT_EQ(env.GetKVCommonDataPath(), _T("\\")) << "the user's key only";
  PutUser(_T("KVCommonDataPath"), _T("C:\\U"));
  EXPECT_EQ(env.GetKVCommonDataPath(), _T("C:\\U\\"));
}

TEST_F(Folders, StartRepairsMissingDefaultsInOrder) {
  PutMachine(_T("KVDataPath"), _T("D:\\Data"));
  PutMachine(_T("SimulationMachinePath"), _T("D:\\not this"));
  g_settings = &tree_;
  AppEnv();
  const std::string lang = Install() + "lang\\English\\";
  const std::pair<LPCTSTR, std::string> rows[] = {
      {kNames[0], lang + "Setup_Sheet_Images\\"}, {kNames[1], lang + "Setup_Sheet_Templates\\"},
      {kNames[2], "D:\\Data\\SubSpindleOps"},     {kNames[3], ""},
      {kNames[4], "D:\\Data\\MachSim\\Machines"}, {kNames[5], "D:\\Data\\MachSim\\Machines"},
      {kNames[6], "D:\\Data\\MachSim\\Jobs"}};
  std::vector<kvtest::Text> expected = {_T("TechDBForms"), _T("KVDataPath")};
  for (const auto& [name, path] : rows) {
    EXPECT_EQ(StoredForUser(name), path);
    EXPECT_EQ(InTree(name), path);
    expected.emplace_back(name);
  }
  EXPECT_EQ(StoredForUser(_T("KVDataPath")), "D:\\Data\\");
  std::vector<kvtest::Text> written = kvtest::ValueNames(kvtest::Key(HKEY_CURRENT_USER, kVersionKey));
  written.resize(expected.size());
  EXPECT_EQ(written, expected);
}

TEST_F(Folders, StoredPathStaysAndFillsSettingsWithoutOne) {
  for (LPCTSTR name : kNames) PutUser(name, _T("E:\\kept"));
  PutMachine(_T("EurekaExePath"), _T("C:\\Sim\\"));
  g_settings = &tree_;
  tree_.SetValue(_T("SimulationJobPath"), CString(_T("F:\\own")));
  AppEnv();
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(StoredForUser(kNames[i]), "E:\\kept");
    EXPECT_EQ(InTree(kNames[i]), i == 6 ? "F:\\own" : "E:\\kept");
  }
  CloseAppEnv();
  RegSettingDeleteValue(HKEY_CURRENT_USER, kVersionKey, kNames[3]);
  AppEnv();
  EXPECT_EQ(StoredForUser(kNames[3]), Install() + "KVVirtualMachine\\KVVirtualMachine.exe");
  EXPECT_EQ(InTree(kNames[3]), "E:\\kept");
}

TEST_F(Folders, SettingsAreReadBeforeTheRegistry) {
  using Getter = CString (CKVEnvApp::*)() const;
  const std::tuple<Getter, LPCTSTR, LPCTSTR> rows[] = {
      {&CKVEnvApp::GetSetupSheetImagePath, kNames[0], _T("\\")},
      {&CKVEnvApp::GetSetupSheetTemplatePath, kNames[1], _T("\\")},
      {&CKVEnvApp::GetSubSpindleOperFolderPath, kNames[2], _T("\\")},
      {&CKVEnvApp::GetDefaultSimulationMachineFolderPath, kNames[4], _T("C:\\machine\\")},
      {&CKVEnvApp::GetDefaultSimulationControllerFolderPath, kNames[5], _T("C:\\machine\\")},
      {&CKVEnvApp::GetDefaultSimulationJobFolderPath, kNames[6], _T("C:\\machine\\")}};
  const CKVEnvApp& env = *AppEnv();
  for (const auto& [get, name, ofMachine] : rows) {
    SCOPED_TRACE(ToUtf8(CString(name)));
    g_settings = nullptr;
    PutMachine(name, _T("C:\\machine"));
    PutUser(name, _T("C:\\user"));
    EXPECT_EQ((env.*get)(), _T("C:\\user\\"));
    PutUser(name, _T(""));
    EXPECT_EQ((env.*get)(), ofMachine);
    g_settings = &tree_;
    EXPECT_EQ((env.*get)(), _T("\\"));
    tree_.SetValue(name, CString(_T("C:\\tree\\")));
    EXPECT_EQ((env.*get)(), _T("C:\\tree\\"));
  }
}

TEST_F(Folders, StyleSheetsComeFromSettingsThenMachine) {
  kvtest::PutText(HKEY_LOCAL_MACHINE, kSetupSheetKey, _T("SaveStyleSheetTo"), _T("C:\\m"));
  g_settings = &tree_;
  EXPECT_EQ(AppEnv()->GetVersionIndependentSetupSheetTemplatePath(), _T("C:\\m"));
  tree_.SetValue(_T("SaveStyleSheetTo"), CString(_T("C:\\t")));
  EXPECT_EQ(AppEnv()->GetVersionIndependentSetupSheetTemplatePath(), _T("C:\\t"));
}

TEST_F(Folders, SimulatorComesFromSettingsOrRegistryThenFromItsApplication) {
  const std::tuple<bool, LPCTSTR, LPCTSTR, LPCTSTR, const char*> rows[] = {
      {false, _T(""), _T("C:\\U"), _T("C:\\Eureka.exe"), "C:\\U\\"},
      {false, _T(""), _T(""), _T("C:\\Eureka.exe"), "C:\\M\\"},
      {true, _T("C:\\T"), _T("C:\\U"), _T(""), "C:\\T\\"},
      {true, _T(""), _T("C:\\U"), _T("C:\\x\\Eureka.exe"), "C:\\x\\Eureka.exe\\"},
      {true, _T(""), _T("C:\\U"), _T("C:\\x\\eureka.exe"), ""}};
  const CKVEnvApp& env = *AppEnv();
  PutMachine(_T("EurekaExePath"), _T("C:\\M"));
  EXPECT_EQ(env.GetVirtualMachinePath(), _T("C:\\M"));
  for (const auto& [settings, tree, user, application, expected] : rows) {
    g_settings = settings ? &tree_ : nullptr;
    tree_.SetValue(_T("EurekaExePath"), CString(tree));
    tree_.SetValue(_T("MachineSimulationApplicationPath"), CString(application));
    PutUser(_T("EurekaExePath"), user);
    EXPECT_EQ(ToUtf8(env.GetIMSExePath()), expected);
  }
}

TEST_F(Folders, EdmPathsNeedTheirSettings) {
  PutUser(_T("KVDataPath"), _T("C:\\D"));
  CKVEnvApp& env = *AppEnv();
  env.SetEDMPostFilePath(_T("C:\\early"));
  EXPECT_EQ(env.GetEDMPostFilePath(), _T("C:\\early"));
  EXPECT_EQ(env.ExtractEDMPostFilePath(), _T(""));
  g_settings = &tree_;
  EXPECT_EQ(env.ExtractEDMCuttingConditionPath(), _T("C:\\D\\Edm\\EDMCuttingConditions\\"));
  EXPECT_EQ(env.ExtractEDMPostFilePath(), _T("C:\\D\\Edm\\Posts\\"));
  env.SetEDMCuttingConditionPath(_T("C:\\c"));
  env.SetEDMPostFilePath(_T("C:\\p"));
  EXPECT_EQ(env.ExtractEDMCuttingConditionPath(), _T("C:\\c"));
  EXPECT_EQ(env.ExtractEDMPostFilePath(), _T("C:\\p"));
  EXPECT_EQ(env.GetEDMCuttingConditionPath(), _T("C:\\c"));
}

TEST_F(Folders, ControllersOfTheMachineAreCopiedIfNothingElseNamesThem) {
  const std::tuple<bool, LPCTSTR, LPCTSTR, const char*, const char*> rows[] = {{true, _T("t"), _T(""), "t", ""},
                                                                               {true, _T(""), _T("u"), "", "u"},
                                                                               {true, _T(""), _T(""), "m", "m"},
                                                                               {false, _T(""), _T(""), "", ""}};
  kvtest::PutText(HKEY_LOCAL_MACHINE, kPostDataKey, kNames[9], _T("m"));
  for (const auto& [settings, tree, user, treeAfter, userAfter] : rows) {
    CloseAppEnv();
    g_settings = settings ? &tree_ : nullptr;
    tree_.SetValue(kNames[9], CString(tree));
    kvtest::PutText(HKEY_CURRENT_USER, kPostDataKey, kNames[9], user);
    AppEnv();
    EXPECT_EQ(InTree(kNames[9]), treeAfter);
    EXPECT_EQ(Stored(HKEY_CURRENT_USER, kPostDataKey, kNames[9]), userAfter);
  }
}
