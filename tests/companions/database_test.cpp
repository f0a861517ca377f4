// Databases through ODBC: reading and writing SQLite, failures in one line, a server that does not answer.
#include "companions/database/database.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "companions/database/connection_strings.h"
#include "companions/database/recordset.h"
#include "tests/odbc_drivers.h"
#include "tests/values.h"

namespace {

using kvtest::ProductPath;
using testing::HasSubstr;
using Row = std::vector<std::string>;

// Runs a call that must fail and returns the exception's line.
template <class Call>
std::string Failure(Call call) {
  try {
    call();
  } catch (const CDaoException& failure) {
    EXPECT_THAT(failure.what(), testing::Not(HasSubstr("\n")));
    return failure.what();
  }
  ADD_FAILURE() << "it worked";
  return {};
}

class Database : public testing::Test {
 protected:
  void SetUp() override {
    kvtest::RegisterSQLiteForAccessFiles();
    database_.Open(SQLiteConnection(path_));
    database_.Execute(_T("CREATE TABLE Tools (Name TEXT, Teeth INTEGER, Diameter REAL)"));
    database_.Execute(
        _T("INSERT INTO Tools VALUES ('Fr\u00E4ser \U0001F600', 4, 1.5), (NULL, NULL, NULL), ('', -7, 1e30)"));
    database_.Execute(_T("CREATE VIEW Big AS SELECT * FROM Tools WHERE Teeth > 2"));
  }
  std::vector<Row> All(const CString& sql) {
    CDaoRecordset records(&database_);
    std::vector<Row> rows;
    for (records.Open(sql); !records.IsEOF(); records.MoveNext()) {
      Row row;
      for (int i = 0; i < records.GetFieldCount(); ++i)
        row.push_back(ToUtf8(records.GetFieldValue(i).value_or(CString(_T("NULL")))));
      rows.push_back(row);
    }
    return rows;
  }

  const kvtest::ScratchFolder folder_;
  const CString path_ = ProductPath(folder_.Write("my \u00FCbung.kvdb", ""));
  CDaoDatabase database_{0, 1};
};

TEST_F(Database, GivesRecords) {
  EXPECT_EQ(
      All(_T("SELECT * FROM Tools")),
      (std::vector<Row>{{"Fr\u00E4ser \U0001F600", "4", "1.5"}, {"NULL", "NULL", "NULL"}, {"", "-7", "1.0e+30"}}));
  CDaoRecordset records(&database_);
  records.SetMostRecords(2);
  records.Open(_T("SELECT Name, Teeth AS \"Z\u00E4hne\" FROM Tools"));
  EXPECT_EQ(records.GetRecordCount(), 2);
  EXPECT_TRUE(records.HasMore());
  EXPECT_EQ(records.GetFieldName(1), _T("Z\u00E4hne"));
  EXPECT_FALSE(records.IsFieldNumeric(0));
  EXPECT_TRUE(records.IsFieldNumeric(1));
  EXPECT_EQ(Failure([&] { records.GetFieldValue(2); }), "there is no such record or field");
  records.SetMostRecords(3);
  records.Open(_T("SELECT Name FROM Tools"));
  EXPECT_FALSE(records.HasMore()) << "all of them";
}

TEST_F(Database, TooMuchFailsAndLeavesAClosedSet) {
  CDaoRecordset records(&database_);
  const CString long_text = _T("SELECT hex(zeroblob(2000)) FROM Tools");
  records.SetMostBytes(3 * (4000 + 16));
  records.Open(long_text);
  EXPECT_EQ(records.GetRecordCount(), 3);
  records.SetMostBytes(3 * (4000 + 16) - 1);
  EXPECT_EQ(Failure([&] { records.Open(long_text); }), "the records are too large to read");
  EXPECT_FALSE(records.IsOpen());
  EXPECT_EQ(records.GetRecordCount() + records.GetFieldCount(), 0);
  EXPECT_EQ(Failure([&] { All(_T("SELECT hex(zeroblob(9000000))")); }), "a value is too long to read");
}

TEST_F(Database, ReadsTextOfAnyLength) {
  for (const int length : {4094, 4095, 4096, 4097, 100'000}) {
    CString text;
    for (int i = 0; i < length; ++i) text += TCHAR(i % 7 ? 'a' + i % 26 : 0x4E00 + i % 100);
    database_.Execute(_T("DELETE FROM Tools"));
    database_.Execute(_T("INSERT INTO Tools VALUES ('") + text + _T("', 1, 2)"));
    ASSERT_EQ(All(_T("SELECT Name FROM Tools")), std::vector<Row>{{ToUtf8(text)}}) << length;
  }
}

TEST_F(Database, ExchangesAndUpdatesOneRecord) {
  CDaoRecordset records(&database_);
  const CDaoFieldExchange load(CDaoFieldExchange::LoadField), store(CDaoFieldExchange::StoreField);
  records.SetCursorLocation(CDaoRecordset::useClient);
  records.Open(_T("SELECT [Name], Teeth FROM [Tools] WHERE Teeth > 0;"));
  CString value(_T("before"));
  records.DFX_Text(&load, _T("[NAME]"), value);
  EXPECT_EQ(value, _T("Fr\u00E4ser \U0001F600"));
  CString longer(TCHAR(0x20AC), 9000), number(_T("5"));
  records.DFX_Text(&store, _T("name"), longer);
  records.DFX_Text(&store, _T("Teeth"), number);
  records.Update();
  EXPECT_EQ(All(_T("SELECT Name, Teeth FROM Tools WHERE Teeth > 0")), (std::vector<Row>{{ToUtf8(longer), "5"}}));
  records.DFX_Text(&load, _T("Name"), value);
  EXPECT_EQ(value, longer) << "the record is as it was written";
  database_.Execute(_T("UPDATE Tools SET Teeth = 6"));
  records.DFX_Text(&store, _T("Name"), number);
  EXPECT_EQ(Failure([&] { records.Update(); }), "the record has changed or gone since it was read");
  records.DFX_Text(&store, _T("Name"), value = TCHAR(0xDCFF));
  EXPECT_EQ(Failure([&] { records.Update(); }), "a database cannot hold this text, because it is not UTF-8: \uFFFD");
  EXPECT_EQ(Failure([&] { records.DFX_Text(&load, _T("Nome"), value); }), "the records have no field \"Nome\"");

  records.Open(_T("SELECT * FROM Tools WHERE Name IS NULL"));
  records.DFX_Text(&store, _T("Name"), value = _T("found by its NULLs"));
  records.Update();
  EXPECT_EQ(All(_T("SELECT Teeth FROM Tools WHERE Name = 'found by its NULLs'")), std::vector<Row>{{"6"}});
  for (LPCTSTR sql : {_T("SELECT 1 AS Name"), _T("SELECT Name FROM Tools, Big"),
                      _T("SELECT Name FROM Tools GROUP BY Name"), _T("SELECT Name FROM [a]b]")}) {
    Failure([&] {
      records.Open(sql);
      records.DFX_Text(&store, _T("Name"), value);
      records.Update();
    });
  }
}

TEST_F(Database, TellsItsTables) {
  ASSERT_EQ(database_.GetTableDefCount(), 2);
  CDaoTableDefInfo info;
  database_.GetTableDefInfo(0, info);
  EXPECT_EQ(kvtest::Values(info.m_strName, info.m_bUpdatable, info.m_lRecordCount), "Big|0|-1");
  database_.GetTableDefInfo(1, info, /*countRecords=*/true);
  EXPECT_EQ(kvtest::Values(info.m_strName, info.m_bUpdatable, info.m_lRecordCount), "Tools|1|3");
  EXPECT_EQ(Failure([&] { database_.GetTableDefInfo(2, info); }), "there is no table with that index");
}

TEST_F(Database, CountsTheRecordsOfTablesOfAnyName) {
  const std::vector<std::string> names = {"a b", "a\"b", "a'b", "a?b", "a]; DROP TABLE Tools; --", "a{d}", "\u00E4"};
  for (const std::string& name : names) {
    CString quoted = FromUtf8(name);
    quoted.Replace(_T("\""), _T("\"\""));
    database_.Execute(_T("CREATE TABLE \"") + quoted + _T("\" AS SELECT 1 AS x UNION SELECT 2"));
  }
  CDaoDatabase other(0, 1);
  other.Open(path_);
  std::vector<std::string> counted;
  for (int i = 0; i < other.GetTableDefCount(); ++i) {
    CDaoTableDefInfo info;
    other.GetTableDefInfo(i, info, /*countRecords=*/true);
    if (info.m_lRecordCount == 2) counted.push_back(ToUtf8(info.m_strName));
  }
  EXPECT_THAT(counted, testing::UnorderedElementsAreArray(names));
}

TEST_F(Database, TellsWhatIsMissingInOneLine) {
  CDaoDatabase other(0, 1);
  EXPECT_EQ(Failure([&] { other.Execute(_T("SELECT 1")); }), "the database is not open");
  const CString none = ProductPath(folder_.Path() / "none.kvdb");
  EXPECT_EQ(Failure([&] { other.Open(none); }), "there is no database file " + (folder_.Path() / "none.kvdb").string());
  EXPECT_EQ(Failure([&] { other.Open(ProductPath(folder_.Path())); }),
            folder_.Path().string() + " is a folder, not a database file");
  EXPECT_EQ(Failure([&] { other.Open(path_ + _T(";x=")); }),
            "the path of a database file cannot contain a semicolon: " + ToUtf8(path_) + ";x=");
  EXPECT_EQ(Failure([&] { other.Open(_T("DSN=no such")); }),
            "there is no data source \"no such\" in the system's odbc.ini; data sources of a single user are not used");
  EXPECT_FALSE(std::filesystem::exists(folder_.Path() / "none.kvdb")) << "and none is made";
  EXPECT_THAT(Failure([&] { other.Open(_T("Driver={No such};Database=x;")); }),
              testing::StartsWith("the ODBC driver \"No such\" is not registered"));
  EXPECT_THAT(Failure([&] { other.Open(ProductPath(folder_.Write("text.kvdb", std::string(5000, 'x')))); }),
              testing::MatchesRegex("cannot open /[^ ]*/text.kvdb: .*not a database.*"));
}

// A name or path must not add options for a driver, and no failure text repeats a password.
TEST_F(Database, ConnectionsThatSmuggleAreNotOpened) {
  const CString server = _T("Driver={SQL Server};SERVER=s;DATABASE=d;Uid=u;Pwd=secret");
  const std::pair<CString, const char*> rows[] = {
      {SQLiteConnection(path_ + _T(";DSN=evil")), "the path of a database file cannot contain a semicolon"},
      {server + _T(";DumpFile=/tmp/x"), "the connection string has a key that is not allowed"},
      {_T("Driver=/tmp/x.so;Database=x"), "name the ODBC driver as it is registered, not by its file"},
      {_T("Driver={") + CString(_T('x'), 300) + _T("};"), "name the ODBC driver as it is registered, not by its file"},
      {server + _T(";secret"), "the connection string is ambiguous"},
  };
  for (const auto& [connection, expected] : rows) {
    CDaoDatabase other(0, 1);
    const std::string failure = Failure([&, text = connection] { other.Open(text); });
    EXPECT_THAT(failure, testing::StartsWith(expected)) << ToUtf8(connection);
    EXPECT_THAT(failure, testing::Not(HasSubstr("secret")));
  }
}

TEST_F(Database, AnInstallationsDriverGivesWayToTheMachines) {
  CDaoDatabase access(1, 0);
  access.Open(path_);
  EXPECT_EQ(access.GetTableDefCount(), 2) << "SQLite under the other's name";
  EXPECT_EQ(access.GetDriverName(), kAccessDriver);
  EXPECT_EQ(database_.GetDriverName(), kSQLiteDriver) << "found in the installation's registration";
}

// The server accepts connections and sends nothing.
TEST(DatabaseServer, ThatDoesNotAnswerFailsInTime) {
  kvtest::RegisterSQLiteForAccessFiles();
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(listen(listener, 5), 0);
  ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
  CString server;
  server.Format(_T("127.0.0.1,%d"), int(ntohs(address.sin_port)));
  CString connection = ServerConnection(server, _T("tech"), _T("eve"), _T("Timeout expired"));
  connection.Replace(_T("Connection Timeout=60"), _T("Connection Timeout=1"));
  CDaoDatabase database(0, 0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THAT(Failure([&] { database.Open(connection); }),
              testing::StartsWith("cannot open database tech on server " + ToUtf8(server) + ": ***"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  close(listener);
}

}  // namespace
