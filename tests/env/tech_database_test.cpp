// Which technology database is in force: the repair of its registry values, and configuration mode.
#include "platform/process.h"
#include "tests/env/tech_database_fixture.h"

namespace {

using kvtest::Person;
using kvtest::TechDatabase;

std::string Setting(const std::string& type, const std::string& flag, const std::string& content) {
  return "<setting databaseType='" + type + "' Default='" + flag + "'>" + content + "</setting>";
}
const std::string kSQLite = Setting("sqlite", "True", "<filePath>my.kvdb</filePath>");
const std::string kAccess = Setting("ms-access", "True", "<filePath>my.mdb</filePath>");
const std::string kServer = Setting("sql", "True",
                                    "<serverID>plant</serverID><databaseName>tech</databaseName><userID>eve</userID>"
                                    "<password>secret</password>");

}  // namespace

TEST_F(TechDatabase, AFreshMachineIsInConfigurationMode) {
  EXPECT_EQ(AppEnv()->GetConfigDataUseStatus(), 1);
  EXPECT_EQ(Forms(), "TechDB App");
  EXPECT_EQ(Flag(kEdmDebugKey, _T("UseConfigData")), 1);
  EXPECT_EQ(Flag(kVersionKey, _T("Access32bit")), -1) << "as it was: none";
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_TECHDB_FAILED) << "no database";
  EXPECT_EQ(AppEnv()->GetKVTechDBFormsName(), _T("TechDB-App.exe"));
  EXPECT_EQ(AppEnv()->GetActiveDBname(), _T(""));
  EXPECT_EQ(AppEnv()->GetKVTechDBName(), _T("TechDB"));
}

TEST_F(TechDatabase, FormsFollowTheAccessEditionThatIsThere) {
  constexpr char k32[] = "TechDBForms.mde (32bit)", kBasic[] = "TechDBForms_basic.mde (32bit)",
                 k64[] = "TechDBFormsx64.mde (64bit)";
  const struct {
    bool narrow, wide;
    const char* before;
    const char* after;
    const char* name;
  } rows[] = {
      {false, true, k32, k64, "TechDBFormsx64.mde"},
      {false, true, kBasic, k64, "TechDBFormsx64.mde"},
      {false, true, k64, k64, "TechDBFormsx64.mde"},
      {true, false, k64, k32, "TechDBForms.mde"},
      {true, false, kBasic, kBasic, "TechDBForms_basic.mde"},
      {true, true, k64, k64, "TechDBFormsx64.mde"},
      {true, true, k32, k32, "TechDBForms.mde"},
      {false, false, k64, k64, "TechDBFormsx64.mde"},
      {false, true, "other", "other", "other.mde"},
      {true, true, "TechDB App", "TechDB App", "TechDB-App.exe"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.before << " narrow " << row.narrow << " wide " << row.wide);
    SetUp();
    Keep(_T("TechDBForms"), row.before);
    if (row.narrow) InstallAccess(11, /*wide=*/false);
    if (row.wide) InstallAccess(15, /*wide=*/true);
    const Person nobody;
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(Forms(), row.after);
    EXPECT_EQ(ToUtf8(env.GetKVTechDBFormsName()), row.name);
    EXPECT_EQ(Flag(kVersionKey, _T("Access32bit")), row.narrow ? 1 : -1);
    EXPECT_EQ(Flag(kVersionKey, _T("Access64bit")), row.wide ? 1 : -1);
    EXPECT_EQ(Flag(kEdmDebugKey, _T("UseConfigData")), -1);
    const bool forms = row.before != std::string("TechDB App");
    const int x64 = forms ? env.GetKVTechDBFormsName().Find(_T("x64")) >= 0 : 1;
    EXPECT_EQ(env.Is64BitDatabaseInUse(), x64);
    EXPECT_EQ(env.Is64BitAccessInstalled(), forms ? x64 : !row.narrow);
    EXPECT_EQ(env.GetKVTechDBName(), forms ? _T("TechDB.mdb") : _T("TechDB"));
  }
}

TEST_F(TechDatabase, ConfigurationModeTellsTheActiveEntry) {
  folder_.Write("TechDB/my.kvdb", "");
  const CString tech = Data() + _T("TechDB\\");
  const struct {
    std::string settings;
    EnvAPP_Init_Result_e result;
    CString name, path, active, sql;
    int sqlite;
  } rows[] = {
      {kSQLite, ENVAPP_INIT_OK, _T("TechDB.kvdb"), tech + _T("my.kvdb"), tech + _T("my.kvdb"), _T(""), 1},
      {kAccess, ENVAPP_INIT_TECHDB_FILE_MISSING, _T("TechDB.mdb"), tech + _T("my.mdb"), tech + _T("my.mdb"), _T(""), 0},
      {kServer, ENVAPP_INIT_OK, _T("TechDB"), _T(""), _T("SERVER=plant;DATABASE=tech"),
       _T("SERVER=plant;DATABASE=tech"), 0},
      {"", ENVAPP_INIT_TECHDB_FAILED, _T("TechDB"), _T(""), _T(""), _T(""), 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.settings);
    CloseAppEnv();
    Configure(row.settings);
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(env.GetEnvAPPInitResult(), row.result);
    EXPECT_EQ(env.GetKVTechDBName(), row.name);
    EXPECT_EQ(env.GetKVTechDBPath(), row.path);
    EXPECT_EQ(env.GetActiveDBname(), row.active);
    EXPECT_EQ(env.GetTechDBSQLInfo(), row.sql);
    EXPECT_EQ(env.IsConnectedToTechDBSQL(), !row.sql.IsEmpty());
    EXPECT_EQ(env.IsConnectedToTechDBSQLServerDirectly(), !row.sql.IsEmpty());
    EXPECT_EQ(env.IsSQLiteDatabaseInUse(), row.sqlite);
    EXPECT_EQ(env.Is64BitDatabaseInUse(), 1);
  }
}

TEST_F(TechDatabase, TheEditionCountsForAccessAlone) {
  InstallAccess(16, /*wide=*/false);
  for (const bool access : {true, false}) {
    CloseAppEnv();
    Configure(access ? kAccess : kSQLite);
    EXPECT_EQ(AppEnv()->Is64BitDatabaseInUse(), !access);
    EXPECT_EQ(AppEnv()->Is64BitAccessInstalled(), 0);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, _T("Software\\Wow6432Node"));
    InstallAccess(16, /*wide=*/true);
    AppEnv()->SetDatabaseInstallationData();
    EXPECT_EQ(Flag(kVersionKey, _T("Access32bit")), access ? 0 : 1) << "detected anew for Access only";
    EXPECT_EQ(Flag(kVersionKey, _T("Access64bit")), access ? 1 : -1);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, _T("Software\\Microsoft"));
    InstallAccess(16, /*wide=*/false);
    RegSettingDeleteValue(HKEY_CURRENT_USER, kVersionKey, _T("Access64bit"));
  }
}

TEST_F(TechDatabase, TheListIsChangedAndWrittenThroughTheEnvironment) {
  const std::string file = (folder_.Path() / "TechDB/database.config").string();
  folder_.Write("TechDB/my.kvdb", "");
  Configure(kSQLite + Setting("ms-access", "False", "<filePath>my.mdb</filePath>"));
  CKVEnvApp& env = *AppEnv();
  ASSERT_EQ(env.GetTechDBConfigInfo()->GetCount(), 2);
  QFTechDBConfigInfo list = *env.GetTechDBConfigInfo();
  list.GetTechDBConfigData(0)->SetActiveFlag(0);
  list.GetTechDBConfigData(1)->SetActiveFlag(1);
  EXPECT_EQ(env.GetTechDBConfigInfo()->IsActiveTechDbChange(&list), 1);
  EXPECT_EQ(env.UpdateDBConfigData(&list), 1);
  EXPECT_EQ(env.GetActiveTechDBConfigData()->GetDatabaseType(), QF_TECHDB_ACCESS);
  EXPECT_EQ(env.WriteDBConfigData(), 1);
  EXPECT_THAT(kvtest::ReadFile(file), testing::HasSubstr("'ms-access' Default='True'"));
  EXPECT_EQ(env.ReadDBConfigData(), 1);
  EXPECT_EQ(env.GetTechDBConfigInfo()->GetCount(), 4) << "reading appends";
  EXPECT_EQ(env.WriteDBConfigData(), 0);
  EXPECT_EQ(env.UpdateTechDBConfigInfo(), 1);
  EXPECT_EQ(env.GetTechDBConfigInfo()->GetCount(), 2);
  env.ClearDBConfigData();
  EXPECT_EQ(env.GetActiveTechDBConfigData(), nullptr);
}

TEST_F(TechDatabase, TheApplicationLiesBesideOrInTheInstallation) {
  const CKVEnvApp& env = *AppEnv();
  const CString install = env.GetKVDrive() + env.GetKVPath();
  CString beside = install.Left(install.GetLength() - 1);
  beside = beside.Left(beside.ReverseFind(_T('\\')) + 1) + _T("TechDBApp\\TechDB-App.exe");
  EXPECT_EQ(ToUtf8(env.GetKVTechDBFormsPath()), ToUtf8(beside)) << "whether or not it is there";
}

TEST_F(TechDatabase, EndsItsProcess) {
  EXPECT_EQ(AppEnv()->KillTechDBProcess(), 1) << "there is none";
  TCHAR command[] = _T("sleep 100");
  STARTUPINFOW startup = {};
  PROCESS_INFORMATION process = {};
  ASSERT_TRUE(CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process));
  AppEnv()->SetTechDBProcessID(process.dwProcessId);
  EXPECT_EQ(AppEnv()->KillTechDBProcess(), 1);
  EXPECT_EQ(WaitForSingleObject(process.hProcess, 10'000), WAIT_OBJECT_0);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}
