// ODBC handles and error messages.
#include "companions/database/internal/odbc_calls.h"

#include <limits>
#include <utility>

namespace kvdatabase {
namespace {

constexpr int kMostReasons = 3;
// The longest message of a driver. A shorter buffer could cut a password, which then would not be recognised.
constexpr SQLSMALLINT kMessageUnits = std::numeric_limits<SQLSMALLINT>::max();

// Removes the layer names in brackets at the start, and replaces control characters by blanks.
std::string Plain(CString text) {
  while (text[0] == _T('[') && text.Find(_T(']')) > 0) text = text.Mid(text.Find(_T(']')) + 1);
  for (int i = 0; i < text.GetLength(); ++i) {
    if (text[i] < 0x20 || (text[i] >= 0x7F && text[i] < 0xA0)) text.SetAt(i, _T(' '));
  }
  return ToUtf8(text.Trim());
}

}  // namespace

bool Succeeded(short result) { return SQL_SUCCEEDED(result); }

SqlText DriverText(const CString& text) {
  std::string bytes = ToUtf8(text);
  if (FromUtf8(bytes) != text) Throw("a database cannot hold this text, because it is not UTF-8: " + bytes);
  return SqlTextFromUtf8(bytes);
}

Handle::Handle(short kind, void* parent) : kind_(kind) {
  if (!Succeeded(SQLAllocHandle(kind, parent, &handle_))) Throw("the ODBC driver manager gives no handle");
}
Handle::~Handle() {
  if (handle_) SQLFreeHandle(kind_, handle_);
}
Handle::Handle(Handle&& other) noexcept : kind_(other.kind_), handle_(std::exchange(other.handle_, nullptr)) {}
Handle& Handle::operator=(Handle&& other) noexcept {
  std::swap(kind_, other.kind_);
  std::swap(handle_, other.handle_);
  return *this;
}

void Throw(const Handle& handle, const std::string& action, const ConnectionPieces& pieces) {
  std::string reasons;
  CString first;
  SQLINTEGER native = 0;
  std::vector<SqlUnit> text(kMessageUnits);
  for (SQLSMALLINT i = 1; i <= kMostReasons; ++i) {
    SqlUnit state[6] = {};
    SQLINTEGER number = 0;
    SQLSMALLINT units = 0;
    if (!Succeeded(SQLGetDiagRec(handle.Kind(), handle.Get(), i, state, &number, text.data(), kMessageUnits, &units)))
      break;
    if (i == 1) {
      first = FromUtf8(Utf8FromSqlText(state));
      native = number;
    }
    const std::string reason = Plain(FromUtf8(Utf8FromSqlText(text.data())));
    if (reasons.find(reason) != std::string::npos) continue;
    if (!reasons.empty()) reasons += "; ";
    reasons += reason;
  }
  if (reasons.empty()) reasons = "the driver gives no reason";
  if (!first.IsEmpty()) reasons += " (" + ToUtf8(first) + ")";
  throw CDaoException(WithoutPassword(action + ": " + reasons, pieces), first, native);
}

void Throw(const std::string& message) { throw CDaoException(message, CString(), 0); }

}  // namespace kvdatabase
