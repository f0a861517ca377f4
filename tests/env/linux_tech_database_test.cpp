// The technology database in forms mode, in which a forms file holds the path, over ODBC; and ending its process.
#include <csignal>

#include "companions/database/recordset.h"
#include "platform/files.h"
#include "tests/child_process.h"
#include "tests/env/tech_database_support.h"
#include "tests/odbc_drivers.h"

using namespace kvtest;
using testing::ElementsAre;

namespace {

class TechDatabaseForms : public TechDatabase {
 protected:
  void SetUp() override {
    RegisterSQLiteForAccessFiles();
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
  SetEnvironmentVariableW(_T("DISPLAY"), nullptr);
  testing::internal::CaptureStderr();
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_TECHDB_FAILED);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Kestrova: TechDBForms.mde could not be found at " + ToUtf8(Data()) +
                "lang\\English\\ Copy the file at the location and click OK to resume\n");
}

TEST_F(TechDatabaseForms, ReadOnlyFileIsMadeWritable) {
  MakeForms(_T("D:\\a.mdb"));
  std::filesystem::permissions(folder_.Path() / "lang/English/TechDBForms.mde", std::filesystem::perms(0444));
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
