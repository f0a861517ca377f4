// Technology databases in memory: entries, their list, their connection strings; and "database.config": reading it,
// adding a missing mark, and writing the marks.
#include "share/utilities/tech_db_config_file.h"

#include <gtest/gtest.h>

#include "companions/database/connection_strings.h"
#include "share/utilities/tech_db_config.h"
#include "tests/utilities/files_fixture.h"
#include "tests/values.h"

namespace {

class TechDBConfigFile : public kvtest::FilesTest {
 protected:
  // Reads a file that lists these settings.
  int Read(const std::string& settings) {
    return ReadFile("<c><applicationSettings>" + settings + "</applicationSettings></c>");
  }
  int ReadFile(const std::string& bytes) {
    info_.ClearTechDBInfo();
    folder.Write("database.config", bytes);
    return ReadTechDBConfig(Folder(), Folder() + _T("TechDB.kvdb"), info_);
  }
  int Write() { return WriteTechDBConfig(Folder(), info_); }
  CString Folder() const { return At(""); }
  std::string Bytes() const { return FilesTest::Bytes("database.config"); }
  // Type, path, connection, description and active flag of an entry.
  std::string Entry(int i) const {
    const QFTechDBConfigData& entry = *info_.GetTechDBConfigData(i);
    return kvtest::Values(entry.GetDatabaseType(), entry.GetFilePath(), entry.GetConnectionString(),
                          entry.GetDescription(), entry.GetActiveFlag());
  }

  QFTechDBConfigInfo info_;
};

constexpr char kThree[] =
    "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<configuration a='1'>\r\n"
    "  <other><setting databaseType='sqlite'><filePath>no</filePath></setting></other>\r\n"
    "  <ApplicationSettings>\r\n"
    "\t<!-- W\xC3\xA4hlbar -->\r\n"
    "\t<SETTING databaseType=\"SQLite\"   Default = 'true' x='2'><filePath>my.kvdb</filePath><description>D &amp; "
    "\xC3\xBC</description></SETTING>\r\n"
    "    <setting Default=\"False\" databaseType='ms-access'>\r\n      <filePath>D:\\x\\my.mdb</filePath>\r\n    "
    "</setting>\r\n"
    "  <setting databaseType='sql'><password>p;w</password><serverID>s</serverID><userID>u</userID>"
    "<databaseName>d</databaseName><authenticationMode>server</authenticationMode></setting>\r\n"
    "  </ApplicationSettings>\r\n</configuration>\r\n\r\n";

}  // namespace

TEST_F(TechDBConfigFile, ReadsTheThreeKinds) {
  ASSERT_EQ(ReadFile(kThree), 1);
  ASSERT_EQ(info_.GetCount(), 3);
  const CString own = Folder() + _T("my.kvdb"), access = _T("D:\\x\\my.mdb");
  EXPECT_EQ(Entry(0), kvtest::Values(QF_TECHDB_SQLITE, own, SQLiteConnection(own), "D & \u00FC", 1));
  EXPECT_EQ(Entry(1), kvtest::Values(QF_TECHDB_ACCESS, access, AccessConnection(access), "", 0));
  const CString server = ServerConnection(_T("s"), _T("d"), _T("u"), _T("p;w"));
  EXPECT_EQ(Entry(2), kvtest::Values(QF_TECHDB_SQLSERVER, "", server, "", 0));
  EXPECT_EQ(Bytes(), kThree) << "reading left it alone";
  EXPECT_EQ(Read("<setting databaseType='SQL'><authenticationMode>WINDOWS</authenticationMode><serverID>s</serverID>"
                 "</setting>"),
            1);
  EXPECT_EQ(info_.GetTechDBConfigData(0)->GetConnectionString(), ServerConnection(_T("s"), _T("")));
}

TEST_F(TechDBConfigFile, PassesOverWhatIsNoDatabase) {
  constexpr const char* kRows[] = {
      "text<!-- c -->",
      "<setting databaseType='oracle'><filePath>a</filePath></setting>",
      "<setting databasetype='sqlite'><filePath>a</filePath></setting>",
      "<setting databaseType='sqlite'/>",
      "<setting databaseType='ms-access'><filePath></filePath></setting>",
      "<g><setting databaseType='sqlite'><filePath>a</filePath></setting></g>",
  };
  for (const char* row : kRows) {
    EXPECT_EQ(Read(row), 1) << row;
    EXPECT_EQ(info_.GetCount(), 0) << row;
  }
}

TEST_F(TechDBConfigFile, FaultsHaveTheirLines) {
  const std::pair<const char*, const char*> rows[] = {
      {"<setting databaseType='sql'/>\n<setting databaseType='SQLite'><filePath>a</filePath></setting>", ""},
      {"\n<setting databaseType='oracle'/>", "2! databaseType \"oracle\" is not known: use sqlite, ms-access or sql\n"},
      {"<setting/>\n<setting databaseType='sqlite'/>",
       "1! this setting has no databaseType, so it is ignored\n2! this database has no filePath, so it is ignored\n"},
      {"<setting databaseType='sqlite'><filePath>/a/b.kvdb</filePath></setting>",
       "1 filePath \"/a/b.kvdb\" has no backslash, so it is a name in the folder of this file: write \\a\\b.kvdb\n"},
      {"<setting databaseType='sqlite'><filePath>a;DSN=b</filePath></setting>",
       "1 filePath \"a;DSN=b\" has a semicolon, so the database cannot be opened\n"},
      {"</a>", "1! start-end tags mismatch\n"},
  };
  for (const auto& [settings, wanted] : rows) {
    Read(settings);
    std::string found;
    for (const TechDBConfigFault& fault : FindTechDBConfigFaults(Folder()))
      found += std::to_string(fault.line) + (fault.dropped ? "! " : " ") + fault.text + "\n";
    EXPECT_EQ(found, wanted);
  }
}

TEST_F(TechDBConfigFile, RefusesWhatIsNoSuchFile) {
  for (const std::string& bytes : {std::string(), std::string("<a"), std::string("<a/>"),
                                   std::string("<applicationSettings><setting/></applicationSettings>"),
                                   "<c><applicationSettings/>" + std::string(kTechDBConfigMostBytes, ' ') + "</c>"}) {
    EXPECT_EQ(ReadFile(bytes), 0) << bytes.substr(0, 60);
    EXPECT_EQ(info_.GetCount(), 0);
    EXPECT_EQ(Write(), 0);
    EXPECT_EQ(Bytes(), bytes);
  }
  EXPECT_EQ(ReadTechDBConfig(CString(), CString(), info_), 0);
}

TEST_F(TechDBConfigFile, WithoutItTheDeliveredDatabaseIsTheOne) {
  const CString delivered = Folder() + _T("TechDB.kvdb");
  EXPECT_EQ(ReadTechDBConfig(Folder(), delivered, info_), 0);
  EXPECT_EQ(info_.GetCount(), 0);
  folder.Write("TechDB.kvdb", "");
  ASSERT_EQ(ReadTechDBConfig(Folder(), delivered, info_), 1);
  ASSERT_EQ(info_.GetCount(), 1);
  EXPECT_EQ(Entry(0), kvtest::Values(QF_TECHDB_SQLITE, delivered, SQLiteConnection(delivered), "", 1));
  EXPECT_EQ(Write(), 0) << "there is no file to write into";
}

// The only setting among two children gets a mark; all other files do not change.
TEST_F(TechDBConfigFile, MarksTheOnlyDatabase) {
  const std::string bare = "<setting databaseType='sqlite'><filePath>a</filePath></setting>";
  const std::string marked = "<setting databaseType='sqlite' Default=\"True\"><filePath>a</filePath></setting>";
  const std::string off = "<setting databaseType='sqlite' Default='False'><filePath>b</filePath></setting>";
  const std::tuple<std::string, std::string, LPCTSTR> rows[] = {
      {"<!--c-->\n" + bare, "<!--c-->\n" + marked, _T("a")},
      {"<version n='1'/>" + bare, "<version n='1'/>" + marked, _T("a")},
      {bare, bare, _T("a")},
      {"<!--c-->" + off, "<!--c-->" + off, _T("b")},
      {off + bare, off + marked, _T("a")},
      {"<!--c--><!--c-->" + bare, "<!--c--><!--c-->" + bare, _T("a")},
  };
  for (const auto& [before, after, active] : rows) {
    SCOPED_TRACE(before);
    EXPECT_EQ(Read(before), 1);
    EXPECT_EQ(Bytes(), "<c><applicationSettings>" + after + "</applicationSettings></c>");
    EXPECT_EQ(info_.GetActiveConfigData()->GetFilePath(), Folder() + active);
    EXPECT_EQ(info_.GetActiveConfigData()->GetActiveFlag(), before != after);
  }
}

TEST_F(TechDBConfigFile, WritesTheMarksAndNothingElse) {
  ASSERT_EQ(ReadFile(kThree), 1);
  for (int i = 0; i < 3; ++i) info_.GetTechDBConfigData(i)->SetActiveFlag(i == 1);
  info_.GetTechDBConfigData(0)->SetFilePath(_T("not saved"));
  EXPECT_EQ(Write(), 1);
  std::string expected = kThree;
  const auto replace = [&](const std::string& from, const std::string& to) {
    ASSERT_NE(expected.find(from), std::string::npos);
    expected.replace(expected.find(from), from.size(), to);
  };
  replace("Default = 'true'", "Default = 'False'");
  replace("Default=\"False\"", "Default=\"True\"");
  replace("databaseType='sql'>", "databaseType='sql' Default=\"False\">");
  EXPECT_EQ(Bytes(), expected);
}

TEST_F(TechDBConfigFile, WritesOnlyIntoTheListsOwnFile) {
  const std::string a = "<setting databaseType='sqlite'><filePath>a</filePath></setting>";
  const std::string b = "<setting databaseType='ms-access'><filePath>b</filePath></setting>";
  const std::string rows[] = {
      a + b,                                               // no node before the entries
      "<!--c-->" + a + b + "<setting databaseType='x'/>",  // an entry that the list lacks
      "<!--c-->" + a,                                      // one less
      "<!--c-->" + b + a,                                  // another order
      "<!--c-->" + a + "<other databaseType='ms-access'/>",
  };
  ASSERT_EQ(Read("<!--c-->" + a + b), 1);
  const QFTechDBConfigInfo list = info_;
  for (const std::string& row : rows) {
    SCOPED_TRACE(row);
    Read(row);
    const std::string before = Bytes();
    EXPECT_EQ(WriteTechDBConfig(Folder(), list), 0);
    EXPECT_EQ(Bytes(), before);
  }
}

TEST_F(TechDBConfigFile, AFileThatMayNotBeWrittenStays) {
  ASSERT_EQ(Read("<!--c--><setting databaseType='sqlite'><filePath>a</filePath></setting>"), 1);
  const std::string before = Bytes();
  std::filesystem::permissions(On("database.config"), std::filesystem::perms(0444));
  info_.GetTechDBConfigData(0)->SetActiveFlag(0);
  EXPECT_EQ(Write(), 0);
  EXPECT_EQ(Bytes(), before);
}

namespace {

using Data = QFTechDBConfigData;

// One entry per character, active for 'a'; its path is its index.
QFTechDBConfigInfo List(std::string_view entries) {
  QFTechDBConfigInfo info;
  for (const char kind : entries) {
    auto* entry = new Data;
    entry->SetActiveFlag(kind == 'a');
    entry->SetFilePath(CString(TCHAR('0' + info.GetCount())));
    EXPECT_EQ(info.AddTechDBConfigData(entry), 1);
  }
  return info;
}

TEST(TechDBConfig, DisplayNamesTellNoPassword) {
  Data entry;
  entry.SetFilePath(_T("C:\\t.kvdb"));
  entry.SetConnectionString(ServerConnection(_T("MYDATABASE"), _T("tech"), _T("u"), _T("secret")));
  for (const int type : {QF_TECHDB_SQLITE, QF_TECHDB_ACCESS}) {
    entry.SetDatabaseType(type);
    EXPECT_EQ(entry.GetDisplayName(), _T("C:\\t.kvdb"));
  }
  entry.SetDatabaseType(QF_TECHDB_SQLSERVER);
  EXPECT_EQ(entry.GetDisplayName(), _T("SERVER=MYDATABASE;DATABASE=tech"));
  const std::pair<LPCTSTR, LPCTSTR> parts[] = {{_T("DRIVER={x};DATABASE=d;SERVER=s"), _T("SERVER=s;DATABASE=d")},
                                               {_T("Server=s;Database=d;"), _T(";")},
                                               {_T("SERVER=s;"), _T("SERVER=s;")},
                                               {_T(""), _T(";")}};
  for (const auto& [connection, expected] : parts) EXPECT_EQ(ServerPartsOfConnection(connection), expected);
}

TEST(TechDBConfig, TheActiveEntryIsTheFirstMarkedOrTheLast) {
  const std::pair<const char*, LPCTSTR> rows[] = {{"--", _T("1")}, {"-aa-", _T("1")}, {"a--", _T("0")}};
  for (const auto& [entries, path] : rows) {
    const QFTechDBConfigInfo info = List(entries);
    ASSERT_NE(info.GetActiveConfigData(), nullptr) << entries;
    EXPECT_EQ(info.GetActiveConfigData()->GetFilePath(), path) << entries;
    EXPECT_EQ(info.GetTechDBConfigData(info.GetCount()), nullptr);
    EXPECT_EQ(info.GetTechDBConfigData(-1), nullptr);
  }
  QFTechDBConfigInfo info = List("a");
  info.ClearTechDBInfo();
  EXPECT_EQ(info.GetActiveConfigData(), nullptr);
  EXPECT_EQ(info.AddTechDBConfigData(nullptr), 0);
  EXPECT_EQ(info.GetCount(), 0);
}

TEST(TechDBConfig, CopiesAreDeepAndChangesShow) {
  QFTechDBConfigInfo info = List("a-");
  QFTechDBConfigInfo copy = info;
  const std::unique_ptr<QFTechDBConfigInfo> clone(info.Clone());
  EXPECT_NE(copy.GetTechDBConfigData(0), info.GetTechDBConfigData(0));
  EXPECT_EQ(info.IsActiveTechDbChange(&copy), 0);
  copy.GetTechDBConfigData(1)->SetDescription(_T("d"));
  EXPECT_EQ(info.IsActiveTechDbChange(&copy), 1);
  EXPECT_EQ(info.IsActiveTechDbChange(clone.get()), 0);
  EXPECT_EQ(info.CopyFrom(&copy), 1);
  EXPECT_EQ(info.GetTechDBConfigData(1)->GetDescription(), _T("d"));
  const QFTechDBConfigInfo longer = List("a--");
  for (const QFTechDBConfigInfo* other : {(const QFTechDBConfigInfo*)nullptr, &longer}) {
    EXPECT_EQ(info.CopyFrom(other), 0);
    EXPECT_EQ(info.IsActiveTechDbChange(other), 0);
  }
  EXPECT_EQ(info.IsActiveTechDbChange(&copy), 0) << "nothing changed";
  info = *&info;
  EXPECT_EQ(info.GetCount(), 2);
  const std::unique_ptr<Data> entry(info.GetTechDBConfigData(1)->Clone());
  EXPECT_EQ(*entry, *info.GetTechDBConfigData(1));
}

}  // namespace
