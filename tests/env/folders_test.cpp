// Folders that a user may move: the order in which they are looked for, and their repair at start.
#include <gtest/gtest.h>

#include "share/env/app_env.h"
#include "share/env/registry_access.h"
#include "share/env/registry_keys.h"
#include "share/settings/settings_key.h"
#include "tests/registered.h"
#include "tests/registry_calls.h"

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

class Folders : public testing::Test {
 protected:
  void SetUp() override {
    CloseAppEnv();
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, _T("Software"));
    g_settings = nullptr;
    kvtest::Register({.appSettings = [] { return g_settings; }});
  }
  void TearDown() override {
    kvtest::Register({});
    CloseAppEnv();
  }

  // Settings with all the values, empty, and the EDM application's.
  void UseSettings() {
    for (LPCTSTR name : kNames) tree_.AddValue(name, CString());
    auto* edm = new QFSettingsKey(_T("EDMApp"), kVersionKey);
    edm->AddValue(_T("EdmCutCondPath"), CString());
    edm->AddValue(_T("EdmPostFilePath"), CString());
    tree_.AddKey(edm);
    g_settings = &tree_;
  }
  static std::string Kept(HKEY hive, LPCTSTR path, LPCTSTR name) {
    return ToUtf8(GetRegSettingStringValue(hive, path, name));
  }
  std::string InTree(LPCTSTR name) const {
    CString text(_T("none"));
    tree_.GetValue(name, text);
    return ToUtf8(text);
  }
  static std::string Install() { return ToUtf8(AppEnv()->GetKVDrive() + AppEnv()->GetKVPath()); }

  QFSettingsKey tree_;
};

}  // namespace

TEST_F(Folders, DataFallsThroughUserMachineInstall) {
  const CKVEnvApp& env = *AppEnv();
  const std::string install = Install();
  EXPECT_EQ(Kept(HKEY_LOCAL_MACHINE, kVersionKey, _T("KVDataPath")), install) << "the start wrote it";
  EXPECT_EQ(Kept(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath")), install);
  const struct {
    LPCTSTR user, machine;
    std::string data, machineAfter;
  } rows[] = {{_T("C:\\U"), _T("C:\\M"), "C:\\U\\", "C:\\M"},
              {_T("C:\\U\\..\\V\\"), _T(""), "C:\\U\\..\\V\\", ""},
              {_T(""), _T("C:\\M\\"), "C:\\M\\", "C:\\M\\"},
              {_T(""), _T(""), install, install},
              {_T("\\"), _T("C:\\M"), "\\", "C:\\M"}};
  for (const auto& row : rows) {
    kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath"), row.user);
    kvtest::PutText(HKEY_LOCAL_MACHINE, kVersionKey, _T("KVDataPath"), row.machine);
    EXPECT_EQ(ToUtf8(env.GetKVDataPath()), row.data);
    EXPECT_EQ(Kept(HKEY_LOCAL_MACHINE, kVersionKey, _T("KVDataPath")), row.machineAfter);
    EXPECT_EQ(Kept(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath")), ToUtf8(CString(row.user)));
  }
  EXPECT_EQ(env.GetKVCommonDataPath(), _T("\\"));
  kvtest::PutText(HKEY_LOCAL_MACHINE, kVersionKey, _T("KVCommonDataPath"), _T("C:\\M"));
  EXPECT_EQ(env.GetKVCommonDataPath(), _T("\\")) << "the user's key only";
  kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("KVCommonDataPath"), _T("C:\\U"));
  EXPECT_EQ(env.GetKVCommonDataPath(), _T("C:\\U\\"));
}

TEST_F(Folders, MissingDefaultsAreRepairedAtStart) {
  kvtest::PutText(HKEY_LOCAL_MACHINE, kVersionKey, _T("KVDataPath"), _T("D:\\Data"));
  kvtest::PutText(HKEY_LOCAL_MACHINE, kVersionKey, _T("SimulationMachinePath"), _T("D:\\not this"));
  UseSettings();
  AppEnv();
  const std::string lang = Install() + "lang\\English\\";
  const std::pair<LPCTSTR, std::string> rows[] = {{_T("KVDataPath"), "D:\\Data\\"},
                                                  {_T("SSImgPath"), lang + "Setup_Sheet_Images\\"},
                                                  {_T("SSTemplatePath"), lang + "Setup_Sheet_Templates\\"},
                                                  {_T("SSOperationPath"), "D:\\Data\\SubSpindleOps"},
                                                  {_T("MachineSimulationApplicationPath"), ""},
                                                  {_T("SimulationMachinePath"), "D:\\Data\\MachSim\\Machines"},
                                                  {_T("SimulationControllerPath"), "D:\\Data\\MachSim\\Machines"},
                                                  {_T("SimulationJobPath"), "D:\\Data\\MachSim\\Jobs"}};
  for (const auto& [name, expected] : rows) {
    EXPECT_EQ(Kept(HKEY_CURRENT_USER, kVersionKey, name), expected) << ToUtf8(CString(name));
    EXPECT_EQ(InTree(name), name == rows[0].first ? "none" : expected) << ToUtf8(CString(name));
  }
  kvtest::Key key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, kVersionKey, 0, KEY_READ, &key), ERROR_SUCCESS);
  std::vector<kvtest::Text> written = kvtest::ValueNames(key);
  written.resize(9);
  EXPECT_EQ(written,
            (std::vector<kvtest::Text>{_T("TechDBForms"), rows[0].first, rows[1].first, rows[2].first, rows[3].first,
                                       rows[4].first, rows[5].first, rows[6].first, rows[7].first}));
}

TEST_F(Folders, WhatIsKeptStaysAndFillsSettingsThatLackIt) {
  for (LPCTSTR name : kNames) kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, name, _T("E:\\kept"));
  kvtest::PutText(HKEY_LOCAL_MACHINE, kVersionKey, _T("EurekaExePath"), _T("C:\\Sim\\"));
  UseSettings();
  tree_.SetValue(_T("SimulationJobPath"), CString(_T("F:\\own")));
  AppEnv();
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(Kept(HKEY_CURRENT_USER, kVersionKey, kNames[i]), "E:\\kept");
    EXPECT_EQ(InTree(kNames[i]), i == 6 ? "F:\\own" : "E:\\kept");
  }
  CloseAppEnv();
  RegSettingDeleteValue(HKEY_CURRENT_USER, kVersionKey, _T("MachineSimulationApplicationPath"));
  AppEnv();
  EXPECT_EQ(Kept(HKEY_CURRENT_USER, kVersionKey, _T("MachineSimulationApplicationPath")),
            Install() + "KVVirtualMachine\\KVVirtualMachine.exe");
  EXPECT_EQ(InTree(_T("MachineSimulationApplicationPath")), "E:\\kept") << "settings that have one keep it";
}

TEST_F(Folders, SettingsGoAheadOfTheRegistry) {
  using Getter = CString (CKVEnvApp::*)() const;
  const struct {
    Getter get;
    LPCTSTR name;
    bool machineToo;
  } rows[] = {{&CKVEnvApp::GetSetupSheetImagePath, _T("SSImgPath"), false},
              {&CKVEnvApp::GetSetupSheetTemplatePath, _T("SSTemplatePath"), false},
              {&CKVEnvApp::GetSubSpindleOperFolderPath, _T("SSOperationPath"), false},
              {&CKVEnvApp::GetDefaultSimulationMachineFolderPath, _T("SimulationMachinePath"), true},
              {&CKVEnvApp::GetDefaultSimulationControllerFolderPath, _T("SimulationControllerPath"), true},
              {&CKVEnvApp::GetDefaultSimulationJobFolderPath, _T("SimulationJobPath"), true}};
  const CKVEnvApp& env = *AppEnv();
  for (const auto& row : rows) {
    const std::string name = ToUtf8(CString(row.name));
    g_settings = nullptr;
    kvtest::PutText(HKEY_LOCAL_MACHINE, kVersionKey, row.name, _T("C:\\machine"));
    kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, row.name, _T("C:\\user"));
    EXPECT_EQ((env.*row.get)(), _T("C:\\user\\")) << name;
    kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, row.name, _T(""));
    EXPECT_EQ((env.*row.get)(), row.machineToo ? _T("C:\\machine\\") : _T("\\")) << name;
    QFSettingsKey tree;
    tree.AddValue(row.name, CString());
    g_settings = &tree;
    EXPECT_EQ((env.*row.get)(), _T("\\")) << name;
    tree.SetValue(row.name, CString(_T("C:\\tree\\")));
    EXPECT_EQ((env.*row.get)(), _T("C:\\tree\\")) << name;
  }
}

TEST_F(Folders, StyleSheetsComeFromSettingsThenMachine) {
  kvtest::PutText(HKEY_LOCAL_MACHINE, kSetupSheetKey, _T("SaveStyleSheetTo"), _T("C:\\m"));
  EXPECT_EQ(AppEnv()->GetVersionIndependentSetupSheetTemplatePath(), _T("C:\\m"));
  UseSettings();
  EXPECT_EQ(AppEnv()->GetVersionIndependentSetupSheetTemplatePath(), _T("C:\\m"));
  tree_.SetValue(_T("SaveStyleSheetTo"), CString(_T("C:\\t")));
  EXPECT_EQ(AppEnv()->GetVersionIndependentSetupSheetTemplatePath(), _T("C:\\t"));
}

TEST_F(Folders, SimulatorIsLookedForInItsOwnOrder) {
  const struct {
    bool settings;
    LPCTSTR tree, user, machine, application;
    const char* expected;
  } rows[] = {{false, _T(""), _T("C:\\U"), _T("C:\\M\\"), _T("C:\\Eureka.exe"), "C:\\U\\"},
              {false, _T(""), _T(""), _T("C:\\M\\"), _T("C:\\Eureka.exe"), "C:\\M\\"},
              {false, _T(""), _T(""), _T(""), _T("C:\\Eureka.exe"), ""},
              {true, _T("C:\\T"), _T("C:\\U"), _T("C:\\M"), _T(""), "C:\\T\\"},
              {true, _T(""), _T("C:\\U"), _T("C:\\M"), _T("C:\\x\\Eureka.exe"), "C:\\x\\Eureka.exe\\"},
              {true, _T(""), _T("C:\\U"), _T("C:\\M"), _T("C:\\x\\eureka.exe"), ""}};
  UseSettings();
  for (const auto& row : rows) {
    CKVEnvApp& env = *AppEnv();
    g_settings = row.settings ? &tree_ : nullptr;
    tree_.SetValue(_T("EurekaExePath"), CString(row.tree));
    tree_.SetValue(_T("MachineSimulationApplicationPath"), CString(row.application));
    kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("EurekaExePath"), row.user);
    kvtest::PutText(HKEY_LOCAL_MACHINE, kVersionKey, _T("EurekaExePath"), row.machine);
    EXPECT_EQ(ToUtf8(env.GetIMSExePath()), row.expected);
    EXPECT_EQ(env.GetVirtualMachinePath(), row.machine);
  }
}

TEST_F(Folders, EdmPathsNeedTheirSettings) {
  kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath"), _T("C:\\D"));
  CKVEnvApp& env = *AppEnv();
  EXPECT_EQ(env.ExtractEDMCuttingConditionPath(), _T(""));
  env.SetEDMPostFilePath(_T("C:\\early"));
  EXPECT_EQ(env.GetEDMPostFilePath(), _T("C:\\early"));
  QFSettingsKey bare;
  g_settings = &bare;
  EXPECT_EQ(env.ExtractEDMPostFilePath(), _T(""));
  UseSettings();
  EXPECT_EQ(env.ExtractEDMCuttingConditionPath(), _T("C:\\D\\Edm\\EDMCuttingConditions\\"));
  EXPECT_EQ(env.ExtractEDMPostFilePath(), _T("C:\\D\\Edm\\Posts\\"));
  env.SetEDMCuttingConditionPath(_T("C:\\c"));
  env.SetEDMPostFilePath(_T("C:\\p"));
  EXPECT_EQ(env.ExtractEDMCuttingConditionPath(), _T("C:\\c"));
  EXPECT_EQ(env.ExtractEDMPostFilePath(), _T("C:\\p"));
  EXPECT_EQ(env.GetEDMCuttingConditionPath(), _T("C:\\c"));
}

TEST_F(Folders, ControllersOfTheMachineAreCopied) {
  constexpr LPCTSTR kName = _T("ControllerPath");
  const struct {
    bool settings;
    LPCTSTR tree, user, machine;
    const char *treeAfter, *userAfter;
  } rows[] = {{true, _T("t"), _T("u"), _T("m"), "t", "u"},
              {true, _T(""), _T("u"), _T("m"), "", "u"},
              {true, _T(""), _T(""), _T("m"), "m", "m"},
              {true, _T(""), _T(""), _T(""), "", ""},
              {false, _T(""), _T(""), _T("m"), "", ""}};
  UseSettings();
  for (const auto& row : rows) {
    CloseAppEnv();
    g_settings = row.settings ? &tree_ : nullptr;
    tree_.SetValue(kName, CString(row.tree));
    kvtest::PutText(HKEY_CURRENT_USER, kPostDataKey, kName, row.user);
    kvtest::PutText(HKEY_LOCAL_MACHINE, kPostDataKey, kName, row.machine);
    AppEnv();
    EXPECT_EQ(InTree(kName), row.treeAfter);
    EXPECT_EQ(Kept(HKEY_CURRENT_USER, kPostDataKey, kName), row.userAfter);
  }
}
