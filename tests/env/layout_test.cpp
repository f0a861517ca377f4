// What hangs on the install folder and the folder of data by name.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/paths.h"
#include "share/env/app_env.h"
#include "share/env/registry_keys.h"
#include "tests/child_process.h"
#include "tests/registry_calls.h"

namespace {

class Layout : public testing::Test {
 protected:
  void SetUp() override {
    CloseAppEnv();
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
  }
  void TearDown() override { CloseAppEnv(); }
  static void KeepDataPath(HKEY hive, const CString& text) {
    kvtest::PutText(hive, kVersionKey, _T("KVDataPath"), text);
  }
};

}  // namespace

TEST_F(Layout, NamesBelowTheRoots) {
  KeepDataPath(HKEY_CURRENT_USER, _T("C:\\D"));
  CKVEnvApp& env = *AppEnv();
  env.SetPartFileNameforRelativePathCreation(_T("part.png"));
  const std::string install = ToUtf8(env.GetKVDrive() + env.GetKVPath());
  const std::string above = install.substr(0, install.rfind('\\', install.size() - 2) + 1);
  const std::pair<CString, std::string> rows[] = {
      {env.GetKV5AxisDllPath(), install + "lang\\English\\KV5AxisResu.dll"},
      {env.GetEDMResourceDllPath(), install + "lang\\English\\"},
      {env.GetUtilitiesDllPath(), install + "KVUtilities\\"},
      {env.GetUtilitiesDllName(), "KVUtilitiesu.dll"},
      {env.GetKVAMHelpPath(), install + "lang\\English\\AM.chm"},
      {env.GetManualPDFFilePath(), install + "lang\\English\\Manuals\\"},
      {env.GetWhatsNewPDFFilePath(), install + "lang\\English\\Manuals\\kv_whats_new.pdf"},
      {env.GetTutorialsPath(), install + "lang\\English\\Manuals"},
      {env.GetTechDBAppPath(), install + "TechDBApp\\"},
      {env.GetCIMCOEditorPath(), above + "nceditor\\KestrovaNCEditor.exe"},
      {env.GetKVTaskPaneINIFilePath(), "C:\\D\\KVTaskPaneWebCtrl.ini"},
      {env.GetTechDBConfigFilePath(), "C:\\D\\TechDB\\"},
      {env.GetDefaultSQLiteDBPath(), "C:\\D\\TechDB\\TechDB.kvdb"},
      {env.GetKVDefaultToolInsertPath(), "C:\\D\\lang\\English\\"},
      {env.SetKVDefaultTechDBPath(), "C:\\D\\lang\\English\\" + ToUtf8(env.GetKVTechDBName())},
      {env.GetKVTechDBPath(), "C:\\D\\lang\\English\\" + ToUtf8(env.GetKVTechDBName())},
      {env.GetXMLReportRelativePathInfo(), "Setup_Sheet_Images\\part.png"},
  };
  for (const auto& [path, expected] : rows) EXPECT_EQ(ToUtf8(path), expected);
  CString install_path;
  KVGetInstallPath(install_path);
  EXPECT_EQ(install_path, env.GetKVPath());
}

TEST_F(Layout, RecordingsFolderIsMadeIfItCanBe) {
  const kvtest::ScratchFolder folder;
  std::filesystem::create_directory(folder.Path() / "real");
  std::filesystem::create_directory_symlink("real", folder.Path() / "link");
  std::filesystem::create_directory(folder.Path() / "locked");
  std::filesystem::permissions(folder.Path() / "locked", std::filesystem::perms::none);
  std::filesystem::permissions(folder.Path(), std::filesystem::perms::all);
  std::filesystem::permissions(folder.Path() / "real", std::filesystem::perms::all);
  const std::string longName(300, 'n');
  const struct {
    std::string data;
    const char* made;  // seen from the scratch folder; null for nothing
  } rows[] = {{"real", "real"},    {"link", "real"},    {"real/../real", "real"},
              {"locked", nullptr}, {longName, nullptr}, {"real/nowhere", nullptr}};
  const CKVEnvApp& env = *AppEnv();
  RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));  // which another user can't read
  for (const auto& row : rows) {
    const std::string data = (folder.Path() / row.data).string();
    const CString path(ProductPathFromSystem(data).c_str());
    KeepDataPath(HKEY_LOCAL_MACHINE, path);
    EXPECT_EQ(env.GetKVDataPath(), path + _T("\\"));
    EXPECT_TRUE(kvtest::IsTrueInChild([&] {
      if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return false;  // root has every right
      return env.GetSimulationRecordingFolderPath() == path + _T("\\SimulationRecordings\\");
    })) << row.data;
    EXPECT_EQ(std::filesystem::exists(folder.Path() / "real/SimulationRecordings"), row.made != nullptr) << row.data;
    std::filesystem::remove(folder.Path() / "real/SimulationRecordings");
  }
  std::filesystem::permissions(folder.Path() / "locked", std::filesystem::perms::all);
}
