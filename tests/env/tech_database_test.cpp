// The current technology database: the repair of its registry values, configuration mode, and forms mode, in which a
// forms file holds the path, over ODBC.
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <csignal>
#include <functional>

#include "companions/database/recordset.h"
#include "framework/message_box.h"
#include "platform/files.h"
#include "tests/child_process.h"
#include "tests/env/clean_environment.h"
#include "tests/odbc_drivers.h"

using namespace kvtest;
using testing::ElementsAre;

namespace {

// Answers message boxes: runs one step per box and cancels after the last step.
class Person : public MessageBoxes {
 public:
  explicit Person(std::vector<std::function<void()>> steps = {})
      : steps_(std::move(steps)), former_(SetMessageBoxes(this)) {}
  ~Person() override { SetMessageBoxes(former_); }
  bool Show(const CString& text, const CString& caption) override {
    EXPECT_EQ(caption, _T("Kestrova"));
    texts.push_back(ToUtf8(text));
    if (texts.size() > steps_.size()) return false;
    steps_[texts.size() - 1]();
    return true;
  }
  std::vector<std::string> texts;

 private:
  std::vector<std::function<void()>> steps_;
  MessageBoxes* former_;
};

class TechDatabase : public CleanEnvironment {
 protected:
  void SetUp() override {
    RegisterSQLiteForAccessFiles();
    CleanEnvironment::SetUp();
    PutText(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath"), Data());
  }

  static void UseForms(LPCTSTR forms) { PutText(HKEY_CURRENT_USER, kVersionKey, _T("TechDBForms"), forms); }
  // The number stored; -1 for none.
  static int Flag(LPCTSTR key, LPCTSTR name) {
    int found = 0;
    const int value = GetRegSettingDwordValue(HKEY_CURRENT_USER, key, name, &found);
    return found ? value : -1;
  }
  static void InstallAccess(int version, bool is64Bit) {
    CString path;
    path.Format(is64Bit ? _T("Software\\Microsoft\\Office\\%d.0\\Access\\InstallRoot")
                        : _T("Software\\Wow6432Node\\Microsoft\\Office\\%d.0\\Access\\InstallRoot"),
                version);
    ASSERT_EQ(Create(HKEY_LOCAL_MACHINE, path), ERROR_SUCCESS);
  }
  CString Data() const { return ProductPath(folder_.Path()) + _T("\\"); }

  const ScratchFolder folder_;
};

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

class TechDatabaseForms : public TechDatabase {
 protected:
  void SetUp() override {
    TechDatabase::SetUp();
    UseForms(_T("TechDBForms.mde (32bit)"));
  }
  // Writes an SQLite database that holds the path; an empty path gives an empty table.
  void MakeForms(const CString& path) const {
    folder_.Write("lang/English/TechDBForms.mde", "");
    Forms().Execute(_T("CREATE TABLE TechDBFormsPathTable (path TEXT)"));
    if (!path.IsEmpty()) Forms().Execute(_T("INSERT INTO TechDBFormsPathTable VALUES ('") + path + _T("')"));
  }
  CString Path() const { return Data() + _T("lang\\English\\TechDBForms.mde"); }
  struct Opened : CDaoDatabase {
    explicit Opened(const CString& path) : CDaoDatabase(0, 1) { Open(path); }
  };
  Opened Forms() const { return Opened(Path()); }
  std::string PathInForms() const {
    Opened forms = Forms();
    CDaoRecordset paths(&forms);
    paths.Open(_T("SELECT path FROM TechDBFormsPathTable"));
    return paths.IsEOF() ? "none" : ToUtf8(paths.GetFieldValue(0).value_or(CString()));
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
  const struct {
    bool has32Bit, has64Bit;
    LPCTSTR forms;
    std::string expected;  // stored text and name of the forms, stored editions, whether 64 bits are in use
  } rows[] = {
      {false, true, k32, x64 + ", -1 1, 1 1"},
      {false, true, kBasic, x64 + ", -1 1, 1 1"},
      {true, false, k64, x32 + ", 1 -1, 0 0"},
      {true, false, kBasic, "TechDBForms_basic.mde (32bit), TechDBForms_basic.mde, 1 -1, 0 0"},
      {true, true, k64, x64 + ", 1 1, 1 1"},
      {true, true, k32, x32 + ", 1 1, 0 0"},
      {false, false, k64, x64 + ", -1 -1, 1 1"},
      {false, true, _T("other"), "other, other.mde, -1 1, 0 0"},
  };
  for (const auto& row : rows) {
    SetUp();
    UseForms(row.forms);
    if (row.has32Bit) InstallAccess(11, /*is64Bit=*/false);
    if (row.has64Bit) InstallAccess(15, /*is64Bit=*/true);
    const Person nobody;
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(
        fmt::format("{}, {}, {} {}, {} {}", Stored(HKEY_CURRENT_USER, kVersionKey, _T("TechDBForms")),
                    ToUtf8(env.GetKVTechDBFormsName()), Flag(kVersionKey, _T("Access32bit")),
                    Flag(kVersionKey, _T("Access64bit")), env.Is64BitDatabaseInUse(), env.Is64BitAccessInstalled()),
        row.expected);
    EXPECT_EQ(env.GetKVTechDBName(), _T("TechDB.mdb"));
  }
}

TEST_F(Configured, ActiveEntryGivesNamePathAndServer) {
  folder_.Write("TechDB/my.kvdb", "");
  const std::string tech = ToUtf8(Data()) + "TechDB\\", server = "SERVER=plant;DATABASE=tech";
  const struct {
    std::string settings;
    EnvAPP_Init_Result_e result;
    std::string expected;  // name, path, active entry, server, flags
  } rows[] = {
      {kSQLite, ENVAPP_INIT_OK, "TechDB.kvdb, " + tech + "my.kvdb, " + tech + "my.kvdb, , 0 0 1 1"},
      {kAccess, ENVAPP_INIT_TECHDB_FILE_MISSING, "TechDB.mdb, " + tech + "my.mdb, " + tech + "my.mdb, , 0 0 0 1"},
      {kServer, ENVAPP_INIT_OK, "TechDB, , " + server + ", " + server + ", 1 1 0 1"},
      {"", ENVAPP_INIT_TECHDB_FAILED, "TechDB, , , , 0 0 0 1"},
  };
  for (const auto& row : rows) {
    CloseAppEnv();
    Configure(row.settings);
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(env.GetEnvAPPInitResult(), row.result) << row.settings;
    EXPECT_EQ(fmt::format("{}, {}, {}, {}, {} {} {} {}", ToUtf8(env.GetKVTechDBName()), ToUtf8(env.GetKVTechDBPath()),
                          ToUtf8(env.GetActiveDBname()), ToUtf8(env.GetTechDBSQLInfo()), env.IsConnectedToTechDBSQL(),
                          env.IsConnectedToTechDBSQLServerDirectly(), env.IsSQLiteDatabaseInUse(),
                          env.Is64BitDatabaseInUse()),
              row.expected);
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

TEST_F(TechDatabase, KillEndsItsProcess) {
  EXPECT_EQ(AppEnv()->KillTechDBProcess(), 1) << "there is no process";
  const pid_t child = InChild([] { return pause() == 0; });
  AppEnv()->SetTechDBProcessID(DWORD(child));
  EXPECT_EQ(AppEnv()->KillTechDBProcess(), 1);
  EXPECT_EQ(ExitCode(child), 128 + SIGKILL);
}

TEST_F(TechDatabaseForms, PathIsExchangedWithTheFormsFile) {
  MakeForms(_T("D:\\\u00DCbung\\TechDB.mdb"));
  const Person nobody;
  CKVEnvApp& env = *AppEnv();
  EXPECT_EQ(env.GetEnvAPPInitResult(), ENVAPP_INIT_OK);
  EXPECT_EQ(env.GetKVTechDBFormsPath(), Path());
  EXPECT_EQ(env.GetKVTechDBPath(), _T("D:\\\u00DCbung\\TechDB.mdb"));
  const std::pair<CString, CString> rows[] = {
      {_T("DRIVER={SQL Server};SERVER=a;DATABASE=b;PWD=c"), _T("SERVER=a;DATABASE=b")},
      {_T("Driver={SQL Server};SERVER=a;DATABASE=b"), _T("")}};
  for (const auto& [path, sql] : rows) {
    env.SetKVTechDBPath(path);
    env.SetKVTechDBPath(/*write=*/1);
    EXPECT_EQ(PathInForms(), ToUtf8(path));
    EXPECT_EQ(env.IsConnectedToTechDBSQL(), !sql.IsEmpty());
    EXPECT_EQ(env.IsConnectedToTechDBSQLServerDirectly(), 0);
    EXPECT_EQ(env.GetTechDBSQLInfo(), sql);
  }
  EXPECT_THAT(nobody.texts, ElementsAre());
}

TEST_F(TechDatabaseForms, EmptyTableChangesNothing) {
  MakeForms(CString());
  const Person nobody;
  CKVEnvApp& env = *AppEnv();
  env.SetKVTechDBPath(CString(_T("kept")));
  for (const int write : {0, 1}) env.SetKVTechDBPath(write);
  EXPECT_EQ(env.GetKVTechDBPath(), _T("kept"));
  EXPECT_EQ(PathInForms(), "none");
  EXPECT_THAT(nobody.texts, ElementsAre());
}

TEST_F(TechDatabaseForms, WaitsForTheFileUntilItIsThereOrTheUserCancels) {
  const std::string missing = "TechDBForms.mde could not be found at " + ToUtf8(Data()) +
                              "lang\\English\\\n\nCopy the file at the location and click OK to resume";
  {
    const Person cancels({[] {}});
    EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_TECHDB_FAILED);
    EXPECT_THAT(cancels.texts, ElementsAre(missing, missing));
    EXPECT_FALSE(AppEnv()->GetKVResourceDllPath().IsEmpty()) << "the start goes on";
  }
  CloseAppEnv();
  const Person helps({[] {}, [this] { MakeForms(_T("D:\\a.mdb")); }});
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_OK);
  EXPECT_EQ(AppEnv()->GetKVTechDBPath(), _T("D:\\a.mdb"));
}

TEST_F(TechDatabaseForms, WithoutAUserTheTextGoesToStderr) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_TECHDB_FAILED);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Kestrova: TechDBForms.mde could not be found at " + ToUtf8(Data()) +
                "lang\\English\\ Copy the file at the location and click OK to resume\n");
}

TEST_F(TechDatabaseForms, ReadOnlyFileIsMadeWritable) {
  MakeForms(_T("D:\\a.mdb"));
  const std::string file = (folder_.Path() / "lang/English/TechDBForms.mde").string();
  ASSERT_EQ(chmod(file.c_str(), 0444), 0);
  const Person person;
  EXPECT_EQ(AppEnv()->GetKVTechDBPath(), _T("D:\\a.mdb"));
  EXPECT_THAT(person.texts, ElementsAre("Changing File Attributes to Read/Write for the file :TechDBForms.mde"));
  EXPECT_EQ(_waccess(Path(), 6), 0);
}

TEST_F(TechDatabaseForms, FileThatIsNoDatabaseIsReported) {
  folder_.Write("lang/English/TechDBForms.mde", std::string(4096, 'x'));
  const Person person;
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_OK) << "the start goes on";
  EXPECT_THAT(person.texts, ElementsAre(testing::HasSubstr("not a database")));
}
