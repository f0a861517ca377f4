// Connection strings: the product's exact strings, and parsing any string.
#include "companions/database/connection_strings.h"

#include <gtest/gtest.h>

TEST(ConnectionStrings, OfTheProductAreExact) {
  EXPECT_EQ(ToUtf8(SQLiteConnection(_T("C:\\a b\\%s.kvdb"))),
            "Driver={Kestrova SQLite3 ODBC Driver};Database=C:\\a b\\%s.kvdb;FKSupport=true;");
  EXPECT_EQ(ToUtf8(AccessConnection(_T("D:\\t.mdb"))),
            "Driver={Microsoft Access Driver (*.mdb, *.accdb)};Dbq=D:\\t.mdb;");
  EXPECT_EQ(ToUtf8(ServerConnection(_T("plant7"), _T("tech"))),
            "Driver={SQL Server};SERVER=plant7;DATABASE=tech;Trusted_Connection=Yes;Connection Timeout=60;");
  EXPECT_EQ(ToUtf8(ServerConnection(_T("plant7"), _T("tech"), _T("eve"), _T("s%d"))),
            "Driver={SQL Server};SERVER=plant7;DATABASE=tech;Uid=eve;Pwd=s%d;Connection Timeout=60;");
}

TEST(ConnectionStrings, PiecesAreFoundAndTheOthersStay) {
  const std::tuple<LPCTSTR, LPCTSTR, LPCTSTR> rows[] = {
      {_T("Driver={a;b}}c};X=1;"), nullptr, _T("Driver={a;b}}c};X=1;k=new;")},
      {_T("K=1;k=2"), _T("1"), _T("k=new;k=2;")},
      {_T(" K = {x;y}}} ;Z"), _T("x;y}"), _T("k=new;")},
      {_T("K={open;X=1"), _T("{open"), _T("k=new;X=1;")},
      {_T("K={a}tail;X={}"), _T("{a}tail"), _T("k=new;X={};")},
      {_T(";;=;"), nullptr, _T("=;k=new;")},
      {_T(""), nullptr, _T("k=new;")},
  };
  for (const auto& [text, value, after] : rows) {
    SCOPED_TRACE(ToUtf8(CString(text)));
    ConnectionPieces pieces(text);
    EXPECT_EQ(pieces.Value(_T("k")), value ? std::optional<CString>(value) : std::nullopt);
    pieces.Set(_T("k"), _T("new"));
    EXPECT_EQ(ToUtf8(pieces.Text()), ToUtf8(CString(after)));
  }
}

TEST(ConnectionStrings, NamesThatBreakThemShow) {
  const std::pair<CString, bool> rows[] = {
      {ServerConnection(_T("plant7\\a,1433"), _T("t=b"), _T("e}ve"), _T("s{d}")), true},
      {_T("Pwd={a;b}}c} ; X = {}; ;Y=;"), true},
      {_T("Driver={a;b};"), false},
      {ServerConnection(_T("{s"), _T("d"), _T("u"), _T("{p;w}")), false},
      {ServerConnection(_T("s"), _T("d"), _T("u"), _T("p;pwd=w")), false},
      {ServerConnection(_T("{s"), _T("d"), _T("u"), _T("p")), false},
      {ServerConnection(_T("s"), _T("d"), _T("u"), _T("{p}w")), false},
      {SQLiteConnection(_T("C:\\a.kvdb;Driver=/tmp/other.so")), false},
      {AccessConnection(_T("C:\\a;b.mdb")), false},
      {CString(_T(';'), 8192), true},
      {CString(_T(';'), 8193), false},
  };
  for (const auto& [text, sound] : rows) EXPECT_EQ(ConnectionPieces(text).IsSound(), sound) << ToUtf8(text);
}

TEST(ConnectionStrings, OnlyKnownKeysAreTaken) {
  const CString server = ServerConnection(_T("s"), _T("d"), _T("u"), _T("p"));
  const std::pair<CString, const char*> rows[] = {
      {SQLiteConnection(_T("C:\\a.kvdb")), ""},
      {AccessConnection(_T("C:\\a.mdb")), ""},
      {ServerConnection(_T("plant7\\a,1433"), _T("tech")), ""},
      {server + _T("Encrypt=yes;tds_version=7.4"), ""},
      {_T("DSN=plant;Uid=u;PWD={a;b}"), ""},
      {_T("DRIVER={SQL Server};SERVER=s;;DATABASE=d"), ""},
      {SQLiteConnection(_T("C:\\a.kvdb;DSN=evil")), "the path"},
      {SQLiteConnection(_T("C:\\a.kvdb;Uid=u")), "the path"},
      {SQLiteConnection(_T("C:\\a.kvdb;")), "the path"},
      {AccessConnection(_T("C:\\a.mdb;")), "the path"},
      {AccessConnection(_T("a.mdb;SystemDB=x")), "the path"},
      {AccessConnection(_T("a.mdb;Database=C:\\b.kvdb;FKSupport=1")), "the path"},
      {SQLiteConnection(CString(_T("C:\\a")) + TCHAR(0)), "the connection string is ambiguous"},
      {SQLiteConnection(_T("{}}")), "the connection string is ambiguous"},
      {server + _T("DSN=evil"), "the connection string has a key"},
      {server + _T("\tUid=u"), "the connection string has a key"},
      {server + _T("FileDSN=/tmp/x"), "the connection string has a key"},
      {_T("DSN=plant;Driver=x"), "the connection string has a key"},
  };
  for (const auto& [text, refusal] : rows) {
    const std::string found = ConnectionPieces(text).Refusal();
    EXPECT_TRUE(*refusal ? found.starts_with(refusal) : found.empty()) << ToUtf8(text) << ": " << found;
  }
}

TEST(ConnectionStrings, PasswordsAreHidden) {
  EXPECT_EQ(WithoutPassword("can't use 'pw*x', pw*x!", ConnectionPieces(_T("PWD={pw*x};"))), "can't use '***', ***!");
  EXPECT_EQ(WithoutPassword("***", ConnectionPieces(_T("password=*"))), "*********");
  EXPECT_EQ(WithoutPassword("one two three", ConnectionPieces(_T("Pwd=one;pwd=two;Password=three"))), "*** *** ***");
  EXPECT_EQ(WithoutPassword("text", ConnectionPieces(_T("Pwd=;Uid=text"))), "text");
  const std::pair<LPCTSTR, LPCTSTR> targets[] = {
      {_T("driver={SQL Server};Server={a b};database=c;PWD=d"), _T("SERVER=a b;DATABASE=c")},
      {_T("DRIVER={SQL Server};SERVER={a;DATABASE=c;PWD={d;e}"), _T("SERVER=a;DATABASE=")},
      {_T("DRIVER={SQL Server};SERVER={a;DATABASE=c;PWD=d"), _T("SERVER={a;DATABASE=c")},
      {_T("SERVER=a;DATABASE=c;PWD=d"), _T("SERVER=a;DATABASE=c")},
      {_T("SERVER=a;Password=d"), _T("SERVER=a;DATABASE=")},
      {_T("C:\\PWD=d;e.mdb"), _T("C:\\PWD=d;e.mdb")},  // a path
  };
  for (const auto& [target, shown] : targets) EXPECT_EQ(ToUtf8(ShownTarget(target)), ToUtf8(CString(shown)));
}
