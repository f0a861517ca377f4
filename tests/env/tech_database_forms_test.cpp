// The technology database's path in a forms file, which is opened through ODBC: forms mode.
#include <sys/stat.h>

#include "companions/database/recordset.h"
#include "platform/files.h"
#include "tests/env/tech_database_fixture.h"

namespace {

using kvtest::Person;
using kvtest::TechDatabase;
using testing::ElementsAre;

class TechDatabaseForms : public TechDatabase {
 protected:
  void SetUp() override {
    TechDatabase::SetUp();
    Keep(_T("TechDBForms"), _T("TechDBForms.mde (32bit)"));
  }
  // A forms file with that path in it, an SQLite database.
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
  std::string Stored() const {
    Opened forms = Forms();
    CDaoRecordset paths(&forms);
    paths.Open(_T("SELECT path FROM TechDBFormsPathTable"));
    return paths.IsEOF() ? "none" : ToUtf8(paths.GetFieldValue(0).value_or(CString()));
  }
};

}  // namespace

TEST_F(TechDatabaseForms, ThePathIsExchangedWithTheFormsFile) {
  MakeForms(_T("D:\\\u00DCbung\\TechDB.mdb"));
  const Person nobody;
  CKVEnvApp& env = *AppEnv();
  EXPECT_THAT(nobody.texts, ElementsAre());
  EXPECT_EQ(env.GetEnvAPPInitResult(), ENVAPP_INIT_OK);
  EXPECT_EQ(env.GetConfigDataUseStatus(), 0);
  EXPECT_EQ(env.GetKVTechDBFormsPath(), Path());
  EXPECT_EQ(env.GetKVTechDBPath(), _T("D:\\\u00DCbung\\TechDB.mdb"));
  EXPECT_EQ(env.IsConnectedToTechDBSQL(), 0);
  const struct {
    LPCTSTR path, sql;
  } rows[] = {{_T("DRIVER={SQL Server};SERVER=a;DATABASE=b;PWD=c"), _T("SERVER=a;DATABASE=b")},
              {_T("Driver={SQL Server};SERVER=a;DATABASE=b"), nullptr},
              {_T(""), nullptr}};
  for (const auto& row : rows) {
    env.SetKVTechDBPath(CString(row.path));
    env.SetKVTechDBPath(/*write=*/1);
    EXPECT_EQ(Stored(), ToUtf8(CString(row.path)));
    EXPECT_EQ(env.IsConnectedToTechDBSQL(), row.sql != nullptr);
    EXPECT_EQ(env.IsConnectedToTechDBSQLServerDirectly(), 0);
    EXPECT_EQ(env.GetTechDBSQLInfo(), row.sql);
  }
  EXPECT_THAT(nobody.texts, ElementsAre());
}

TEST_F(TechDatabaseForms, AnEmptyTableChangesNothing) {
  MakeForms(CString());
  const Person nobody;
  CKVEnvApp& env = *AppEnv();
  env.SetKVTechDBPath(CString(_T("kept")));
  for (const int write : {0, 1}) env.SetKVTechDBPath(write);
  EXPECT_EQ(env.GetKVTechDBPath(), _T("kept"));
  EXPECT_EQ(Stored(), "none");
  EXPECT_THAT(nobody.texts, ElementsAre());
}

TEST_F(TechDatabaseForms, WaitsForTheFileAsLongAsThePersonWants) {
  const std::string missing = "TechDBForms.mde could not be found at " + ToUtf8(Data()) +
                              "lang\\English\\\n\nCopy the file at the location and click OK to resume";
  {
    const Person gives_up({[] {}});
    EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_TECHDB_FAILED);
    EXPECT_THAT(gives_up.texts, ElementsAre(missing, missing));
    EXPECT_FALSE(AppEnv()->GetKVResourceDllPath().IsEmpty()) << "the start goes on";
  }
  CloseAppEnv();
  const Person helps({[] {}, [this] { MakeForms(_T("D:\\a.mdb")); }});
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_OK);
  EXPECT_THAT(helps.texts, ElementsAre(missing, missing));
  EXPECT_EQ(AppEnv()->GetKVTechDBPath(), _T("D:\\a.mdb"));
}

TEST_F(TechDatabaseForms, WithoutAnybodyTheTextGoesToStderrAndTheWaitEnds) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_TECHDB_FAILED);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Kestrova: TechDBForms.mde could not be found at " + ToUtf8(Data()) +
                "lang\\English\\ Copy the file at the location and click OK to resume\n");
}

TEST_F(TechDatabaseForms, AReadOnlyFileIsMadeWritable) {
  MakeForms(_T("D:\\a.mdb"));
  const std::string file = (folder_.Path() / "lang/English/TechDBForms.mde").string();
  ASSERT_EQ(chmod(file.c_str(), 0444), 0);
  const Person person;
  EXPECT_EQ(AppEnv()->GetKVTechDBPath(), _T("D:\\a.mdb"));
  EXPECT_THAT(person.texts, ElementsAre("Changing File Attributes to Read/Write for the file :TechDBForms.mde"));
  EXPECT_EQ(_waccess(Path(), 6), 0);
}

TEST_F(TechDatabaseForms, WhatTheFileCanNotDoIsReported) {
  folder_.Write("lang/English/TechDBForms.mde", std::string(4096, 'x'));
  const Person person;
  EXPECT_EQ(AppEnv()->GetEnvAPPInitResult(), ENVAPP_INIT_OK) << "reported, and no failure of the start";
  EXPECT_THAT(person.texts, ElementsAre(testing::HasSubstr("not a database")));
}
