// Connections: opening, closing, properties and the list of tables.
#include "companions/database/database.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <tuple>

#include "companions/database/connection_strings.h"
#include "companions/database/internal/drivers.h"
#include "companions/database/internal/odbc_calls.h"
#include "companions/database/recordset.h"
#include "platform/odbc.h"
#include "platform/paths.h"

using kvdatabase::DriverText;
using kvdatabase::Handle;
using kvdatabase::Parameter;
using kvdatabase::Succeeded;
using kvdatabase::SystemSources;
using kvdatabase::Throw;

namespace {

constexpr LPCTSTR kTimeout = _T("Connection Timeout");
constexpr std::intptr_t kMostSeconds = 24 * 60 * 60;
constexpr std::size_t kMostTables = 100'000;
constexpr SQLSMALLINT kNameUnits = 1024;
// Longer texts are bound as SQL_WLONGVARCHAR.
constexpr std::size_t kShortUnits = 4000;

// The calls take texts that they don't change without const.
SqlUnit* Units(const SqlText& text) { return const_cast<SqlUnit*>(text.c_str()); }

bool StartsWith(const CString& text, LPCTSTR start) {
  return text.Left(CString(start).GetLength()).CompareNoCase(start) == 0;
}

// The target of a connection for a message: the file or data source, or server and database.
std::string Target(const ConnectionPieces& pieces) {
  if (const auto file = pieces.Value(_T("DBQ"))) return SystemPathFromProduct(*file);
  if (const auto source = pieces.Value(_T("DSN"))) return ToUtf8(*source);
  const CString database = pieces.Value(_T("DATABASE")).value_or(CString());
  const auto server = pieces.Value(_T("SERVER"));
  return server ? "database " + ToUtf8(database) + " on server " + ToUtf8(*server) : SystemPathFromProduct(database);
}

CString Information(const Handle& link, SQLUSMALLINT kind) {
  SqlUnit text[kNameUnits] = {};
  SQLSMALLINT bytes = 0;
  if (!Succeeded(SQLGetInfo(link.Get(), kind, text, SQLSMALLINT(sizeof text - sizeof *text), &bytes))) return CString();
  return FromUtf8(Utf8FromSqlText(text));
}

// A text column of the current row; empty for NULL. Cut after kNameUnits - 1 units.
CString NameColumn(const Handle& statement, SQLUSMALLINT column) {
  SqlUnit text[kNameUnits] = {};
  SQLLEN bytes = 0;
  if (!Succeeded(SQLGetData(statement.Get(), column, kSqlUnits, text, sizeof text, &bytes)) || bytes == SQL_NULL_DATA)
    return CString();
  return FromUtf8(Utf8FromSqlText(text));
}

// The first word of a statement after blanks, comments and open parentheses.
CString FirstWord(const CString& sql) {
  const TextView text = sql.View();
  std::size_t at = 0;
  while (at < text.size()) {
    const TextView rest = text.substr(at);
    if (rest.starts_with(_T("--"))) {
      at = std::min(text.find(_T('\n'), at), text.size());
    } else if (rest.starts_with(_T("/*"))) {
      const std::size_t end = text.find(_T("*/"), at + 2);
      at = end == text.npos ? text.size() : end + 2;
    } else if (rest[0] <= _T(' ') || rest[0] == _T('(')) {
      ++at;
    } else {
      break;
    }
  }
  std::size_t end = at;
  while (end < text.size() && ((text[end] | 0x20) >= _T('a') && (text[end] | 0x20) <= _T('z'))) ++end;
  return CString(text.substr(at, end - at));
}

// A first check only: a statement that begins with one of these words may still change data.
void RequireQuery(const CString& sql) {
  const CString word = FirstWord(sql);
  for (LPCTSTR query : {_T("SELECT"), _T("WITH"), _T("VALUES"), _T("EXPLAIN")}) {
    if (word.CompareNoCase(query) == 0) return;
  }
  Throw("the database is open for reading only: a query begins with SELECT, WITH, VALUES or EXPLAIN, not with \"" +
        ToUtf8(word) + "\"");
}

// A name quoted for a statement: in brackets, which all databases understand, or in double quotes if it contains a
// character that a driver's parser would interpret inside brackets.
CString Quoted(CString name) {
  if (name.FindOneOf(_T("];?{}\"'")) < 0) return _T("[") + name + _T("]");
  name.Replace(_T("\""), _T("\"\""));
  return _T("\"") + name + _T("\"");
}

}  // namespace

CDaoException::CDaoException(std::string message, CString state, LONG native)
    : CException(std::move(message)), m_strState(std::move(state)), m_lNative(native) {}

CDaoDatabase::Connection::~Connection() {
  if (connected && read_only) SQLEndTran(SQL_HANDLE_DBC, link.Get(), SQL_ROLLBACK);
  if (connected) SQLDisconnect(link.Get());
}

Handle CDaoDatabase::Connection::Run(const CString& sql, std::vector<Parameter>& parameters,
                                     const std::string& failure) const {
  if (read_only) RequireQuery(sql);
  Handle statement(SQL_HANDLE_STMT, link.Get());
  SQLUSMALLINT number = 0;
  for (Parameter& parameter : parameters) {
    const std::size_t units = std::max(std::size_t{1}, parameter.value.size());
    parameter.length = parameter.null ? SQL_NULL_DATA : SQLLEN(parameter.value.size() * sizeof(SqlUnit));
    const SQLSMALLINT type = units > kShortUnits ? SQL_WLONGVARCHAR : SQL_WVARCHAR;
    if (!Succeeded(SQLBindParameter(statement.Get(), ++number, SQL_PARAM_INPUT, kSqlUnits, type, SQLULEN(units), 0,
                                    Units(parameter.value), SQLLEN(units * sizeof(SqlUnit)), &parameter.length)))
      Throw(statement, "cannot bind a value", pieces);
  }
  CString text = sql;
  if (!takes_semicolons) text.TrimRight(_T("; \t\r\n"));
  const short result = SQLExecDirect(statement.Get(), Units(DriverText(text)), SQL_NTS);
  if (!Succeeded(result) && result != SQL_NO_DATA) Throw(statement, failure, pieces);
  return statement;
}

CDaoDatabase::CDaoDatabase(int, int isSQLite) : isSQLite_(isSQLite) {}
CDaoDatabase::~CDaoDatabase() = default;

void CDaoDatabase::Open(const CString& pathOrConnection, bool readOnly) {
  Close();
  const bool whole = StartsWith(pathOrConnection, _T("Driver=")) || StartsWith(pathOrConnection, _T("DSN="));
  const CString text = whole       ? pathOrConnection
                       : isSQLite_ ? SQLiteConnection(pathOrConnection)
                                   : AccessConnection(pathOrConnection);
  if (!whole && pathOrConnection.Find(_T(';')) >= 0)
    Throw("the path of a database file cannot contain a semicolon: " + ToUtf8(ShownTarget(pathOrConnection)));
  auto connection = std::make_unique<Connection>(text);
  if (const std::string refusal = connection->pieces.Refusal(); !refusal.empty()) Throw(refusal);
  std::optional<SystemSources> sources;
  if (connection->pieces.Value(_T("DSN"))) sources.emplace();
  const SqlText forManager = SqlTextFromUtf8(ToUtf8(kvdatabase::ForDriverManager(connection->pieces)));
  const Utf8Connections utf8;
  connection->environment = Handle(SQL_HANDLE_ENV, nullptr);
  SQLSetEnvAttr(connection->environment.Get(), SQL_ATTR_ODBC_VERSION, reinterpret_cast<void*>(SQL_OV_ODBC3), 0);
  connection->link = Handle(SQL_HANDLE_DBC, connection->environment.Get());
  const std::intptr_t seconds = std::atol(ToUtf8(connection->pieces.Value(kTimeout).value_or(CString())).c_str());
  if (seconds > 0)  // a driver of local files may not support it
    SQLSetConnectAttr(connection->link.Get(), SQL_ATTR_LOGIN_TIMEOUT,
                      reinterpret_cast<void*>(std::min(seconds, kMostSeconds)), SQL_IS_UINTEGER);
  if (readOnly)  // a hint; some drivers ignore it
    SQLSetConnectAttr(connection->link.Get(), SQL_ATTR_ACCESS_MODE, reinterpret_cast<void*>(SQL_MODE_READ_ONLY),
                      SQL_IS_UINTEGER);
  const std::string failure = "cannot open " + Target(connection->pieces);
  if (!Succeeded(SQLDriverConnect(connection->link.Get(), nullptr, Units(forManager), SQL_NTS, nullptr, 0, nullptr,
                                  SQL_DRIVER_NOPROMPT)))
    Throw(connection->link, failure, connection->pieces);
  connection->connected = true;
  const CString program = Information(connection->link, SQL_DBMS_NAME);
  connection->takes_semicolons = program != _T("MDBTOOLS");
  std::vector<Parameter> none;
  const bool isSQLite = program == _T("SQLite");
  if (isSQLite)  // its driver accepts any file and fails only at the first query
    connection->Run(_T("SELECT COUNT(*) FROM sqlite_master"), none, failure);
  if (readOnly && isSQLite) {
    connection->Run(_T("PRAGMA query_only = 1"), none);
  } else if (readOnly) {  // changes are rolled back when the connection closes
    SQLSetConnectAttr(connection->link.Get(), SQL_ATTR_AUTOCOMMIT, reinterpret_cast<void*>(SQL_AUTOCOMMIT_OFF),
                      SQL_IS_UINTEGER);
  }
  connection->read_only = readOnly;
  connection_ = std::move(connection);
}

bool CDaoDatabase::IsOpen() const { return connection_ != nullptr; }

void CDaoDatabase::Close() { connection_.reset(); }

CDaoDatabase::Connection& CDaoDatabase::Opened() const {
  if (!connection_) Throw("the database is not open");
  return *connection_;
}

CString CDaoDatabase::GetDriverName() const { return Opened().pieces.Value(_T("Driver")).value_or(CString()); }

CString CDaoDatabase::GetDriverFile() const {
  const Handle& link = Opened().link;
  CString file = Information(link, SQL_DRIVER_NAME) + _T(" ") + Information(link, SQL_DRIVER_VER);
  return file.Trim();
}

CString CDaoDatabase::GetVersion() const {
  const Handle& link = Opened().link;
  return Information(link, SQL_DBMS_NAME) + _T(" ") + Information(link, SQL_DBMS_VER);
}

int CDaoDatabase::GetTableDefCount() {
  Connection& connection = Opened();
  if (connection.tables_read) return int(connection.tables.size());
  const Handle statement(SQL_HANDLE_STMT, connection.link.Get());
  const SqlText kinds = SqlTextFromUtf8("TABLE,VIEW");
  if (!Succeeded(SQLTables(statement.Get(), nullptr, 0, nullptr, 0, nullptr, 0, Units(kinds), SQL_NTS)))
    Throw(statement, "cannot list the tables", connection.pieces);
  std::vector<CDaoTableDefInfo> tables;
  short result = SQL_SUCCESS;
  while (tables.size() < kMostTables && Succeeded(result = SQLFetch(statement.Get()))) {
    CDaoTableDefInfo info;
    info.m_strSchema = NameColumn(statement, 2);
    info.m_strName = NameColumn(statement, 3);
    const CString kind = NameColumn(statement, 4);
    info.m_bUpdatable = kind == _T("TABLE");
    if (info.m_bUpdatable || kind == _T("VIEW"))
      tables.push_back(std::move(info));  // some drivers list other kinds too
  }
  if (!Succeeded(result) && result != SQL_NO_DATA) Throw(statement, "cannot list the tables", connection.pieces);
  std::sort(tables.begin(), tables.end(), [](const auto& a, const auto& b) {
    return std::tie(a.m_strSchema, a.m_strName) < std::tie(b.m_strSchema, b.m_strName);
  });
  connection.tables = std::move(tables);
  connection.tables_read = true;
  return int(connection.tables.size());
}

void CDaoDatabase::GetTableDefInfo(int index, CDaoTableDefInfo& info, bool countRecords) {
  if (index < 0 || index >= GetTableDefCount()) Throw("there is no table with that index");
  CDaoTableDefInfo& table = connection_->tables[std::size_t(index)];
  if (countRecords && table.m_lRecordCount < 0) {
    const CString owner = table.m_strSchema.IsEmpty() ? CString() : Quoted(table.m_strSchema) + _T(".");
    CDaoRecordset count(this);
    count.Open(_T("SELECT COUNT(*) FROM ") + owner + Quoted(table.m_strName));
    if (!count.IsEOF())
      table.m_lRecordCount = LONG(std::atol(ToUtf8(count.GetFieldValue(0).value_or(CString())).c_str()));
  }
  info = table;
}

LONG CDaoDatabase::Execute(const CString& sql) {
  std::vector<Parameter> none;
  const Handle statement = Opened().Run(sql, none);
  SQLLEN records = -1;
  SQLRowCount(statement.Get(), &records);
  return LONG(records);
}
