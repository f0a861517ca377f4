// Connection strings: the product's, byte for byte, and reading any.
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
  const struct {
    LPCTSTR text, value, after;
  } rows[] = {
      {_T("Driver={a;b}}c};X=1;"), nullptr, _T("Driver={a;b}}c};X=1;k=new;")},
      {_T("K=1;k=2"), _T("1"), _T("k=new;k=2;")},
      {_T(" K = {x;y}}} ;Z"), _T("x;y}"), _T("k=new;")},
      {_T("K={open;X=1"), _T("{open;X=1"), _T("k=new;")},
      {_T("K={a}tail;X={}"), _T("{a}tail"), _T("k=new;X={};")},
      {_T("K==;"), _T("="), _T("k=new;")},
      {_T(";;=;"), nullptr, _T("=;k=new;")},
      {_T(""), nullptr, _T("k=new;")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(ToUtf8(CString(row.text)));
    ConnectionPieces pieces(row.text);
    const std::optional<CString> value = pieces.Value(_T("k"));
    EXPECT_EQ(value, row.value ? std::optional<CString>(row.value) : std::nullopt);
    pieces.Set(_T("k"), _T("new"));
    EXPECT_EQ(ToUtf8(pieces.Text()), ToUtf8(CString(row.after)));
  }
}

TEST(ConnectionStrings, PasswordsAreHidden) {
  EXPECT_EQ(WithoutPassword("can't use 'pw*x', pw*x!", ConnectionPieces(_T("PWD={pw*x};"))), "can't use '***', ***!");
  EXPECT_EQ(WithoutPassword("***", ConnectionPieces(_T("password=*"))), "*********");
  EXPECT_EQ(ShownTarget(_T("driver={SQL Server};Server={a;b};database=c;PWD=d")), _T("SERVER=a;b;DATABASE=c"));
  EXPECT_EQ(ShownTarget(_T("C:\\PWD=d;e.mdb")), _T("C:\\PWD=d;e.mdb")) << "a path";
  EXPECT_EQ(WithoutPassword("text", ConnectionPieces(_T("Pwd=;Uid=text"))), "text");
}
