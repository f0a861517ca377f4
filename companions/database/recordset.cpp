// Reading records, and updating one.
#include "companions/database/recordset.h"

#include <algorithm>
#include <array>

#include "companions/database/internal/odbc_calls.h"
#include "platform/odbc.h"

using kvdatabase::Handle;
using kvdatabase::Parameter;
using kvdatabase::Succeeded;
using kvdatabase::Throw;

namespace {

constexpr SQLSMALLINT kNameUnits = 1024;
constexpr std::size_t kChunkUnits = 8192;

bool IsNumeric(SQLSMALLINT type) {
  constexpr SQLSMALLINT kTypes[] = {SQL_NUMERIC, SQL_DECIMAL, SQL_INTEGER, SQL_SMALLINT, SQL_FLOAT,
                                    SQL_REAL,    SQL_DOUBLE,  SQL_BIGINT,  SQL_TINYINT};
  return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

CString WithoutBrackets(CString name) {
  if (name[0] == _T('[') && name.Right(1) == _T("]")) name = name.Mid(1, name.GetLength() - 2);
  return name;
}

// A name quoted for a statement. A name with a bracket cannot be quoted this way and throws.
CString Bracketed(const CString& name) {
  if (name.IsEmpty() || name.FindOneOf(_T("[]")) >= 0)
    Throw("the record cannot be updated: the name of its table or of a field is unknown or contains a bracket");
  return _T("[") + name + _T("]");
}

// The words of a statement. A name in brackets or quotes is one word; a semicolon and a comma are words too.
std::vector<CString> Words(const CString& sql) {
  constexpr LPCTSTR kBlanks = _T(" \t\r\n");
  std::vector<CString> words;
  for (int at = 0; at < sql.GetLength();) {
    const TCHAR c = sql[at];
    if (CString(kBlanks).Find(c) >= 0) {
      ++at;
      continue;
    }
    const TCHAR close = c == _T('[') ? _T(']') : c == _T('"') || c == _T('\'') ? c : TCHAR(0);
    const int found = close ? sql.Find(close, at + 1) : -1;
    int end = at + 1;
    if (found > 0) {
      end = found + 1;
    } else if (c != _T(';') && c != _T(',')) {
      while (end < sql.GetLength() && CString(_T(" \t\r\n;,")).Find(sql[end]) < 0) ++end;
    }
    words.push_back(sql.Mid(at, end - at));
    at = end;
  }
  return words;
}

// The table of a SELECT from exactly one table; empty for any other statement.
CString TableOf(const CString& sql) {
  const std::vector<CString> words = Words(sql);
  const auto is = [](LPCTSTR word) { return [word](const CString& other) { return other.CompareNoCase(word) == 0; }; };
  if (words.empty() || !is(_T("SELECT"))(words[0])) return CString();
  const auto from = std::find_if(words.begin(), words.end(), is(_T("FROM")));
  if (words.end() - from < 2) return CString();
  const auto next = from + 2;
  const bool alone = next == words.end() || *next == _T(";") || is(_T("WHERE"))(*next) || is(_T("ORDER"))(*next);
  CString name = WithoutBrackets(from[1]);
  return alone ? name.Trim(_T('"')) : CString();
}

// The value of a column of the current row. Subtracts its memory from left and throws if that is too little.
std::optional<CString> Value(const Handle& statement, SQLUSMALLINT column, const ConnectionPieces& pieces,
                             std::size_t& left) {
  const auto take = [&left](std::size_t bytes) {
    if (bytes > left) Throw("the records are too large to read");
    left -= bytes;
  };
  take(sizeof(std::optional<CString>));
  SqlText text;
  std::array<SqlUnit, kChunkUnits> chunk;
  for (;;) {
    SQLLEN bytes = 0;
    const short result = SQLGetData(statement.Get(), column, kSqlUnits, chunk.data(), sizeof chunk, &bytes);
    if (result == SQL_NO_DATA) return FromUtf8(Utf8FromSqlText(text));  // the value ended exactly at the end of a chunk
    if (!Succeeded(result)) Throw(statement, "cannot read a value", pieces);
    if (bytes == SQL_NULL_DATA) return std::nullopt;
    const bool whole = bytes >= 0 && std::size_t(bytes) < sizeof chunk;
    const std::size_t got = whole ? std::size_t(bytes) / sizeof(SqlUnit) : chunk.size() - 1;  // a chunk ends with a NUL
    take(got * sizeof(SqlUnit));
    text.append(chunk.data(), got);
    if (whole) return FromUtf8(Utf8FromSqlText(text));
    if (text.size() * sizeof(SqlUnit) > CDaoRecordset::kMostFieldBytes) Throw("a value is too long to read");
  }
}

}  // namespace

CDaoRecordset::CDaoRecordset(CDaoDatabase* database) : m_pDatabase(database) {}
CDaoRecordset::~CDaoRecordset() = default;

void CDaoRecordset::Open(const CString& sql) try {
  Close();
  CDaoDatabase::Connection& connection = m_pDatabase->Opened();
  std::vector<Parameter> none;
  const Handle statement = connection.Run(sql, none);
  SQLSMALLINT columns = 0;
  SQLNumResultCols(statement.Get(), &columns);
  for (SQLSMALLINT i = 1; i <= columns; ++i) {
    SqlUnit name[kNameUnits] = {};
    SQLSMALLINT units = 0, type = 0, digits = 0, nullable = 0;
    SQLULEN size = 0;
    SQLDescribeCol(statement.Get(), SQLUSMALLINT(i), name, kNameUnits, &units, &type, &size, &digits, &nullable);
    m_Fields.push_back({FromUtf8(Utf8FromSqlText(name)), IsNumeric(type)});
  }
  std::size_t left = m_nMostBytes;
  while (columns > 0) {
    const short result = SQLFetch(statement.Get());
    if (result == SQL_NO_DATA) break;
    if (!Succeeded(result)) Throw(statement, "cannot read the records", connection.pieces);
    m_bMore = GetRecordCount() >= m_nMostRecords;
    if (m_bMore) break;
    Record record;
    for (SQLSMALLINT i = 1; i <= columns; ++i)
      record.push_back(Value(statement, SQLUSMALLINT(i), connection.pieces, left));
    m_Records.push_back(std::move(record));
  }
  m_Table = TableOf(sql);
  m_bOpen = true;
} catch (...) {
  Close();
  throw;
}

void CDaoRecordset::Close() {
  m_bOpen = m_bMore = false;
  m_Table.Empty();
  m_Fields.clear();
  m_Records.clear();
  m_nCurrent = 0;
  m_Stored.clear();
}

const std::optional<CString>& CDaoRecordset::GetFieldValue(int field) const {
  if (IsEOF() || field < 0 || field >= GetFieldCount()) Throw("there is no such record or field");
  return m_Records[m_nCurrent][std::size_t(field)];
}

std::size_t CDaoRecordset::FieldOf(const CString& column) const {
  const CString name = WithoutBrackets(column);
  for (std::size_t i = 0; i < m_Fields.size(); ++i) {
    if (m_Fields[i].name.CompareNoCase(name) == 0) return i;
  }
  Throw("the records have no field \"" + ToUtf8(name) + "\"");
}

void CDaoRecordset::DFX_Text(const CDaoFieldExchange* exchange, const CString& column, CString& value) {
  const std::size_t field = FieldOf(column);
  if (exchange->m_nOperation == CDaoFieldExchange::StoreField) {
    m_Stored.emplace_back(field, value);
  } else {
    value = GetFieldValue(int(field)).value_or(CString());
  }
}

void CDaoRecordset::Update() {
  if (IsEOF()) Throw("there is no record to update");
  if (m_Stored.empty()) return;
  CDaoDatabase::Connection& connection = m_pDatabase->Opened();
  Record& record = m_Records[m_nCurrent];
  std::vector<Parameter> parameters;
  CString sql = _T("UPDATE ") + Bracketed(m_Table) + _T(" SET ");
  for (const auto& [field, value] : m_Stored) {
    if (!parameters.empty()) sql += _T(", ");
    sql += Bracketed(m_Fields[field].name) + _T(" = ?");
    parameters.emplace_back(value);
  }
  LPCTSTR joint = _T(" WHERE ");
  for (std::size_t i = 0; i < record.size(); ++i, joint = _T(" AND ")) {
    sql += joint + Bracketed(m_Fields[i].name) + (record[i] ? _T(" = ?") : _T(" IS NULL"));
    if (record[i]) parameters.emplace_back(record[i]);
  }
  const Handle statement = connection.Run(sql, parameters);
  SQLLEN changed = 0;
  SQLRowCount(statement.Get(), &changed);
  if (changed == 0) Throw("the record has changed or gone since it was read");
  for (auto& [field, value] : m_Stored) record[field] = std::move(value);
  m_Stored.clear();
}
