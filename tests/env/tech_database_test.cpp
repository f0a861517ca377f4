// The current technology database: the repair of its registry values, and configuration mode.
#include <fmt/format.h>

#include "platform/files.h"
#include "tests/env/tech_database_support.h"

using namespace kvtest;
using testing::ElementsAre;

namespace {

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
  const std::string x64 = "TechDBFormsx64.mde (64bit), TechDBFormsx64.mde",
                    x32 = "TechDBForms.mde (32bit), TechDBForms.mde";
  // Expected: stored text and name of the forms, stored editions, whether 64 bits are in use.
  const std::tuple<bool, bool, LPCTSTR, std::string> rows[] = {
      {false, true, k32, x64 + ", -1 1, 1 1"},
      {false, true, kBasic, x64 + ", -1 1, 1 1"},
      {true, false, k64, x32 + ", 1 -1, 0 0"},
      {true, false, kBasic, "TechDBForms_basic.mde (32bit), TechDBForms_basic.mde, 1 -1, 0 0"},
      {true, true, k64, x64 + ", 1 1, 1 1"},
      {true, true, k32, x32 + ", 1 1, 0 0"},
      {false, false, k64, x64 + ", -1 -1, 1 1"},
      {false, true, _T("other"), "other, other.mde, -1 1, 0 0"},
  };
  for (const auto& [has32Bit, has64Bit, forms, expected] : rows) {
    SetUp();
    UseForms(forms);
    if (has32Bit) InstallAccess(11, /*is64Bit=*/false);
    if (has64Bit) InstallAccess(15, /*is64Bit=*/true);
    const Person nobody;
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(
        fmt::format("{}, {}, {} {}, {} {}", Stored(HKEY_CURRENT_USER, kVersionKey, _T("TechDBForms")),
                    ToUtf8(env.GetKVTechDBFormsName()), Flag(kVersionKey, _T("Access32bit")),
                    Flag(kVersionKey, _T("Access64bit")), env.Is64BitDatabaseInUse(), env.Is64BitAccessInstalled()),
        expected);
    EXPECT_EQ(env.GetKVTechDBName(), _T("TechDB.mdb"));
  }
}

TEST_F(Configured, ActiveEntryGivesNamePathAndServer) {
  folder_.Write("TechDB/my.kvdb", "");
  const std::string tech = ToUtf8(Data()) + "TechDB\\", server = "SERVER=plant;DATABASE=tech";
  // Expected: name, path, active entry, server, flags.
  const std::tuple<std::string, EnvAPP_Init_Result_e, std::string> rows[] = {
      {kSQLite, ENVAPP_INIT_OK, "TechDB.kvdb, " + tech + "my.kvdb, " + tech + "my.kvdb, , 0 0 1 1"},
      {kAccess, ENVAPP_INIT_TECHDB_FILE_MISSING, "TechDB.mdb, " + tech + "my.mdb, " + tech + "my.mdb, , 0 0 0 1"},
      {kServer, ENVAPP_INIT_OK, "TechDB, , " + server + ", " + server + ", 1 1 0 1"},
      {"", ENVAPP_INIT_TECHDB_FAILED, "TechDB, , , , 0 0 0 1"},
  };
  for (const auto& [settings, result, expected] : rows) {
    CloseAppEnv();
    Configure(settings);
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(env.GetEnvAPPInitResult(), result) << settings;
    EXPECT_EQ(fmt::format("{}, {}, {}, {}, {} {} {} {}", ToUtf8(env.GetKVTechDBName()), ToUtf8(env.GetKVTechDBPath()),
                          ToUtf8(env.GetActiveDBname()), ToUtf8(env.GetTechDBSQLInfo()), env.IsConnectedToTechDBSQL(),
                          env.IsConnectedToTechDBSQLServerDirectly(), env.IsSQLiteDatabaseInUse(),
                          env.Is64BitDatabaseInUse()),
              expected);
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
  EXPECT_THAT(ReadFile(folder_.Path() / "TechDB/database.config"), testing::HasSubstr("'ms-access' Default='True'"));
  EXPECT_EQ(env.ReadDBConfigData(), 1);
  EXPECT_EQ(env.GetTechDBConfigInfo()->GetCount(), 4) << "reading appends";
  EXPECT_EQ(env.WriteDBConfigData(), 0);
  EXPECT_EQ(env.UpdateTechDBConfigInfo(), 1);
  EXPECT_EQ(env.GetTechDBConfigInfo()->GetCount(), 2);
  env.ClearDBConfigData();
  EXPECT_EQ(env.GetActiveTechDBConfigData(), nullptr);
}
