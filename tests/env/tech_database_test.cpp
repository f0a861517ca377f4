// The current technology database: the repair of its registry values, and configuration mode.
#include <csignal>

#include "tests/child_process.h"
#include "tests/env/tech_database_fixture.h"

namespace {

using kvtest::TechDatabase;

std::string Setting(const std::string& type, const std::string& flag, const std::string& content) {
  return "<setting databaseType='" + type + "' Default='" + flag + "'>" + content + "</setting>";
}
const std::string kSQLite = Setting("sqlite", "True", "<filePath>my.kvdb</filePath>");
const std::string kAccess = Setting("ms-access", "True", "<filePath>my.mdb</filePath>");
const std::string kServer = Setting("sql", "True",
                                    "<serverID>plant</serverID><databaseName>tech</databaseName><userID>eve</userID>"
                                    "<password>secret</password>");

class Configured : public TechDatabase {
 protected:
  void Configure(const std::string& settings) const {
    folder_.Write("TechDB/database.config",
                  "<c><applicationSettings><!-- -->" + settings + "</applicationSettings></c>");
  }
};

}  // namespace

TEST_F(TechDatabase, FreshMachineIsInConfigurationMode) {
  EXPECT_EQ(AppEnv()->GetConfigDataUseStatus(), 1);
  EXPECT_EQ(Stored(HKEY_CURRENT_USER, kVersionKey, _T("TechDBForms")), "TechDB App");
  EXPECT_EQ(Flag(kEdmDebugKey, _T("UseConfigData")), 1);
  EXPECT_EQ(Flag(kVersionKey, _T("Access32bit")), -1) << "an unchanged flag is not written";
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_TECHDB_FAILED) << "no database";
  EXPECT_EQ(AppEnv()->GetKVTechDBName(), _T("TechDB"));
}

TEST_F(TechDatabase, FormsFollowTheInstalledAccessEdition) {
  constexpr LPCTSTR k32 = _T("TechDBForms.mde (32bit)"), kBasic = _T("TechDBForms_basic.mde (32bit)"),
                    k64 = _T("TechDBFormsx64.mde (64bit)");
  const struct {
    bool has32Bit, has64Bit;
    LPCTSTR before, after, name;
  } rows[] = {
      {false, true, k32, k64, _T("TechDBFormsx64.mde")},  {false, true, kBasic, k64, _T("TechDBFormsx64.mde")},
      {true, false, k64, k32, _T("TechDBForms.mde")},     {true, false, kBasic, kBasic, _T("TechDBForms_basic.mde")},
      {true, true, k64, k64, _T("TechDBFormsx64.mde")},   {true, true, k32, k32, _T("TechDBForms.mde")},
      {false, false, k64, k64, _T("TechDBFormsx64.mde")}, {false, true, _T("other"), _T("other"), _T("other.mde")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << ToUtf8(CString(row.before)) << row.has32Bit << row.has64Bit);
    SetUp();
    UseForms(row.before);
    if (row.has32Bit) InstallAccess(11, /*is64Bit=*/false);
    if (row.has64Bit) InstallAccess(15, /*is64Bit=*/true);
    const kvtest::Person nobody;
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(Stored(HKEY_CURRENT_USER, kVersionKey, _T("TechDBForms")), ToUtf8(CString(row.after)));
    EXPECT_EQ(env.GetKVTechDBFormsName(), row.name);
    EXPECT_EQ(Flag(kVersionKey, _T("Access32bit")), row.has32Bit ? 1 : -1);
    EXPECT_EQ(Flag(kVersionKey, _T("Access64bit")), row.has64Bit ? 1 : -1);
    const int is64Bit = CString(row.name).Find(_T("x64")) >= 0;
    EXPECT_EQ(env.Is64BitDatabaseInUse(), is64Bit);
    EXPECT_EQ(env.Is64BitAccessInstalled(), is64Bit);
    EXPECT_EQ(env.GetKVTechDBName(), _T("TechDB.mdb"));
  }
}

TEST_F(Configured, ActiveEntryGivesNamePathAndServer) {
  folder_.Write("TechDB/my.kvdb", "");
  const CString tech = Data() + _T("TechDB\\"), server = _T("SERVER=plant;DATABASE=tech");
  const struct {
    std::string settings;
    EnvAPP_Init_Result_e result;
    CString name, path, active, sql;
    int isSQLite;
  } rows[] = {
      {kSQLite, ENVAPP_INIT_OK, _T("TechDB.kvdb"), tech + _T("my.kvdb"), tech + _T("my.kvdb"), _T(""), 1},
      {kAccess, ENVAPP_INIT_TECHDB_FILE_MISSING, _T("TechDB.mdb"), tech + _T("my.mdb"), tech + _T("my.mdb"), _T(""), 0},
      {kServer, ENVAPP_INIT_OK, _T("TechDB"), _T(""), server, server, 0},
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
    EXPECT_EQ(env.IsSQLiteDatabaseInUse(), row.isSQLite);
    EXPECT_EQ(env.Is64BitDatabaseInUse(), 1);
  }
}

TEST_F(Configured, EditionCountsForAccessOnly) {
  for (const bool isAccess : {true, false}) {
    SetUp();
    InstallAccess(16, /*is64Bit=*/false);
    Configure(isAccess ? kAccess : kSQLite);
    EXPECT_EQ(AppEnv()->Is64BitDatabaseInUse(), !isAccess);
    EXPECT_EQ(AppEnv()->Is64BitAccessInstalled(), 0);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, _T("Software\\Wow6432Node"));
    InstallAccess(16, /*is64Bit=*/true);
    AppEnv()->SetDatabaseInstallationData();
    EXPECT_EQ(Flag(kVersionKey, _T("Access32bit")), isAccess ? 0 : 1);
    EXPECT_EQ(Flag(kVersionKey, _T("Access64bit")), isAccess ? 1 : -1);
  }
}

TEST_F(Configured, ListIsReadAndWrittenThroughTheEnvironment) {
  folder_.Write("TechDB/my.kvdb", "");
  Configure(kSQLite + Setting("ms-access", "False", "<filePath>my.mdb</filePath>"));
  CKVEnvApp& env = *AppEnv();
  QFTechDBConfigInfo list = *env.GetTechDBConfigInfo();
  list.GetTechDBConfigData(0)->SetActiveFlag(0);
  list.GetTechDBConfigData(1)->SetActiveFlag(1);
  EXPECT_EQ(env.UpdateDBConfigData(&list), 1);
  EXPECT_EQ(env.GetActiveTechDBConfigData()->GetDatabaseType(), QF_TECHDB_ACCESS);
  EXPECT_EQ(env.WriteDBConfigData(), 1);
  EXPECT_THAT(kvtest::ReadFile(folder_.Path() / "TechDB/database.config"),
              testing::HasSubstr("'ms-access' Default='True'"));
  EXPECT_EQ(env.ReadDBConfigData(), 1);
  EXPECT_EQ(env.GetTechDBConfigInfo()->GetCount(), 4) << "reading appends";
  EXPECT_EQ(env.WriteDBConfigData(), 0);
  EXPECT_EQ(env.UpdateTechDBConfigInfo(), 1);
  EXPECT_EQ(env.GetTechDBConfigInfo()->GetCount(), 2);
  env.ClearDBConfigData();
  EXPECT_EQ(env.GetActiveTechDBConfigData(), nullptr);
}

TEST_F(TechDatabase, KillEndsItsProcess) {
  EXPECT_EQ(AppEnv()->KillTechDBProcess(), 1) << "there is no process";
  const pid_t child = kvtest::InChild([] { return pause() == 0; });
  AppEnv()->SetTechDBProcessID(DWORD(child));
  EXPECT_EQ(AppEnv()->KillTechDBProcess(), 1);
  EXPECT_EQ(kvtest::ExitCode(child), 128 + SIGKILL);
}
