// Writing and parsing connection strings.
#include "companions/database/connection_strings.h"

#include <algorithm>
#include <span>

namespace {

constexpr LPCTSTR kPasswordKeys[] = {_T("Pwd"), _T("Password")};
constexpr std::string_view kHidden = "***";

// The keys of each kind of connection.
constexpr LPCTSTR kDatabaseKeys[] = {_T("Driver"), _T("Database"), _T("FKSupport")};
constexpr LPCTSTR kDbqKeys[] = {_T("Driver"), _T("Dbq")};
constexpr LPCTSTR kSourceKeys[] = {_T("DSN"), _T("Database"), _T("Uid"),
                                   _T("Pwd"), _T("Password"), _T("Connection Timeout")};
constexpr LPCTSTR kServerKeys[] = {_T("Driver"),
                                   _T("Server"),
                                   _T("Port"),
                                   _T("Database"),
                                   _T("Uid"),
                                   _T("Pwd"),
                                   _T("Password"),
                                   _T("Trusted_Connection"),
                                   _T("Connection Timeout"),
                                   _T("TDS_Version"),
                                   _T("ClientCharset"),
                                   _T("Encrypt"),
                                   _T("TrustServerCertificate"),
                                   _T("APP"),
                                   _T("WSID"),
                                   _T("Language")};

// Only blanks: a key with another character in it is not the known one.
CString Trimmed(CString text) { return text.Trim(_T(' ')); }

// The end of the piece that starts at begin: its semicolon or the end of the text. Semicolons inside closed braces
// don't count.
int PieceEnd(const CString& text, int begin) {
  const int sign = text.Find(_T('='), begin);
  const int plain = text.Find(_T(';'), begin);
  const int end = plain < 0 ? text.GetLength() : plain;
  if (sign < 0 || sign > end) return end;
  int at = sign + 1;
  while (text[at] == _T(' ')) ++at;
  if (text[at] != _T('{')) return end;
  for (++at; at < text.GetLength(); ++at) {
    if (text[at] != _T('}')) continue;
    if (text[at + 1] != _T('}')) break;
    ++at;
  }
  if (at >= text.GetLength()) return end;
  const int semicolon = text.Find(_T(';'), at);
  return semicolon < 0 ? text.GetLength() : semicolon;
}

// A doubled brace at the end belongs to the value and does not close it.
bool IsBraced(const CString& value) {
  int end = value.GetLength();
  while (end > 1 && value[end - 1] == _T('}')) --end;
  return value[0] == _T('{') && (value.GetLength() - end) % 2 == 1;
}

std::string ListOf(std::span<const LPCTSTR> keys) {
  std::string list;
  for (LPCTSTR key : keys) list += (list.empty() ? "" : ", ") + ToUtf8(CString(key));
  return list;
}

CString Unbraced(CString value) {
  if (!IsBraced(value)) return value;
  value = value.Mid(1, value.GetLength() - 2);
  value.Replace(_T("}}"), _T("}"));
  return value;
}

CString DriverPiece(LPCTSTR driver) { return _T("Driver={") + CString(driver) + _T("};"); }

CString ServerPieces(const CString& server, const CString& database) {
  return DriverPiece(kServerDriver) + _T("SERVER=") + server + _T(";DATABASE=") + database + _T(";");
}

}  // namespace

CString SQLiteConnection(const CString& filePath) {
  return DriverPiece(kSQLiteDriver) + _T("Database=") + filePath + _T(";FKSupport=true;");
}

CString AccessConnection(const CString& filePath) {
  return DriverPiece(kAccessDriver) + _T("Dbq=") + filePath + _T(";");
}

CString ServerConnection(const CString& server, const CString& database) {
  return ServerPieces(server, database) + _T("Trusted_Connection=Yes;Connection Timeout=60;");
}

CString ServerConnection(const CString& server, const CString& database, const CString& user, const CString& password) {
  return ServerPieces(server, database) + _T("Uid=") + user + _T(";Pwd=") + password + _T(";Connection Timeout=60;");
}

ConnectionPieces::ConnectionPieces(const CString& text) {
  if (text.GetLength() > kMostUnits) {
    sound_ = false;
    return;
  }
  sound_ = text.Find(TCHAR(0)) < 0;
  for (int begin = 0; begin < text.GetLength();) {
    const int end = PieceEnd(text, begin);
    const CString piece = text.Mid(begin, end - begin);
    has_gap_ = has_gap_ || (end < text.GetLength() && Trimmed(piece).IsEmpty());
    Add(piece);
    begin = end + 1;
  }
}

void ConnectionPieces::Add(const CString& raw) {
  const int sign = raw.Find(_T('='));
  if (sign < 0) {
    sound_ = sound_ && Trimmed(raw).IsEmpty();
    return;
  }
  const CString key = Trimmed(raw.Left(sign));
  const CString value = Trimmed(raw.Mid(sign + 1));
  const auto is = [&key](LPCTSTR other) { return key.CompareNoCase(other) == 0; };
  const bool password = std::any_of(std::begin(kPasswordKeys), std::end(kPasswordKeys), is);
  sound_ = sound_ && !Value(key) && (value[0] != _T('{') || IsBraced(value)) &&
           (password || value.Find(_T(';')) < 0);  // a brace may have swallowed another piece, even a password
  pieces_.push_back({raw, key, Unbraced(value)});
}

std::optional<CString> ConnectionPieces::Value(LPCTSTR key) const {
  for (const Piece& piece : pieces_) {
    if (piece.key.CompareNoCase(key) == 0) return piece.value;
  }
  return std::nullopt;
}

std::vector<CString> ConnectionPieces::Values(LPCTSTR key) const {
  std::vector<CString> values;
  for (const Piece& piece : pieces_) {
    if (piece.key.CompareNoCase(key) == 0) values.push_back(piece.value);
  }
  return values;
}

void ConnectionPieces::Set(LPCTSTR key, const CString& value) {
  const Piece set{key + (_T("=") + value), key, value};
  for (Piece& piece : pieces_) {
    if (piece.key.CompareNoCase(key) != 0) continue;
    piece = set;
    return;
  }
  pieces_.push_back(set);
}

CString ConnectionPieces::Text() const {
  CString text;
  for (const Piece& piece : pieces_) text += piece.raw + _T(";");
  return text;
}

std::string ConnectionPieces::Refusal() const {
  if (!sound_) {
    return "the connection string is ambiguous: a path or name in it contains a semicolon or begins with a brace, or "
           "the password does and is not in braces";
  }
  const CString driver = Value(_T("Driver")).value_or(CString());
  const auto is_path = [this](LPCTSTR key) { return Value(key).value_or(CString()).Find(_T('\\')) >= 0; };
  const bool source = Value(_T("DSN")).has_value() && driver.IsEmpty();
  const bool file = !source && (driver.CompareNoCase(kSQLiteDriver) == 0 || driver.CompareNoCase(kAccessDriver) == 0 ||
                                is_path(_T("Database")) || is_path(_T("Dbq")));
  std::span<const LPCTSTR> known = kServerKeys;
  if (source) known = kSourceKeys;
  if (file) known = kDatabaseKeys;
  if (file && Value(_T("Dbq"))) known = kDbqKeys;
  const auto is_known = [&known](const Piece& piece) {
    const auto is = [&piece](LPCTSTR key) { return piece.key.CompareNoCase(key) == 0; };
    return std::any_of(known.begin(), known.end(), is);
  };
  const bool all_known = std::all_of(pieces_.begin(), pieces_.end(), is_known);
  if (file && (has_gap_ || !all_known)) {
    return "the path of a database file cannot contain a semicolon, and the connection string of a file has only these "
           "keys: " +
           ListOf(known);
  }
  if (all_known) return {};
  return "the connection string has a key that is not allowed, or a name or password in it contains a semicolon; its "
         "keys are " +
         ListOf(known);
}

CString ShownTarget(const CString& pathOrConnection) {
  const ConnectionPieces pieces(pathOrConnection);
  bool connection = pathOrConnection.GetLength() > ConnectionPieces::kMostUnits || pieces.Value(_T("Driver")) ||
                    pieces.Value(_T("DSN"));
  for (LPCTSTR key : kPasswordKeys) connection = connection || pieces.Value(key);
  if (!connection) return pathOrConnection;
  const auto shown = [&pieces](LPCTSTR key) {
    return pieces.Value(key).value_or(CString()).SpanExcluding(_T(";"));  // a password may follow the semicolon
  };
  return _T("SERVER=") + shown(_T("SERVER")) + _T(";DATABASE=") + shown(_T("DATABASE"));
}

std::string WithoutPassword(std::string text, const ConnectionPieces& pieces) {
  for (LPCTSTR key : kPasswordKeys) {
    for (const CString& value : pieces.Values(key)) {
      const std::string password = ToUtf8(value);
      if (password.empty()) continue;
      for (std::size_t at = 0; (at = text.find(password, at)) != std::string::npos; at += kHidden.size())
        text.replace(at, password.size(), kHidden);
    }
  }
  return text;
}
