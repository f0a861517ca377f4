// Connection strings: writing those of the product's databases, and parsing any. A connection string is a sequence of
// key=value pieces, each ended by ";". Keys compare without case. A value in braces may contain semicolons, and a
// closing brace in it is doubled.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "framework/text.h"

inline constexpr LPCTSTR kSQLiteDriver = _T("Kestrova SQLite3 ODBC Driver");
inline constexpr LPCTSTR kAccessDriver = _T("Microsoft Access Driver (*.mdb, *.accdb)");
inline constexpr LPCTSTR kServerDriver = _T("SQL Server");

// The connection string for a file by its path, for a server with the operating system's user, and for a server with
// user and password. The texts are inserted unchanged and without braces; kept for existing data sources.
KVSHARE_API CString SQLiteConnection(const CString& filePath);
KVSHARE_API CString AccessConnection(const CString& filePath);
KVSHARE_API CString ServerConnection(const CString& server, const CString& database);
KVSHARE_API CString ServerConnection(const CString& server, const CString& database, const CString& user,
                                     const CString& password);

// A parsed connection string. Pieces that are not changed by Set keep their exact text.
class KVSHARE_API ConnectionPieces {
 public:
  explicit ConnectionPieces(const CString& text);

  // False for a text that drivers may read in different ways: a piece without "=", a key that occurs twice, a brace
  // that is not closed, a NUL, or a semicolon in a value other than a password in braces. This happens if a path, name
  // or password contains a semicolon or begins with a brace. Also false for more than kMostUnits characters, which are
  // not parsed.
  bool IsSound() const { return sound_; }
  static constexpr int kMostUnits = 8192;
  // The value of the first piece with that key, without its braces; empty optional if there is no such piece. A brace
  // that is not closed is an ordinary character.
  std::optional<CString> Value(LPCTSTR key) const;
  // The values of all pieces with that key, in order.
  std::vector<CString> Values(LPCTSTR key) const;
  // Replaces the first piece with that key by key=value, or appends it. The value is not put in braces.
  void Set(LPCTSTR key, const CString& value);
  // All pieces, each followed by a semicolon.
  CString Text() const;
  // Why a connection is not opened with this string: it is not sound, or it has a key that the product does not know,
  // such as one that a path with a semicolon smuggled in. Drivers and their manager have keys that load code, write
  // files or change settings. Empty if there is no reason. The text repeats nothing of the string.
  std::string Refusal() const;

 private:
  struct Piece {
    CString raw;  // the piece as written, without the semicolon
    CString key;
    CString value;
  };
  void Add(const CString& raw);

  std::vector<Piece> pieces_;
  bool sound_ = true;
  bool has_gap_ = false;  // an empty piece with a semicolon
};

// A text for messages that contains no password: a path unchanged; for a connection string "SERVER=x;DATABASE=y". A
// text with a Driver, DSN or password key, or one too long to parse, is treated as a connection string.
KVSHARE_API CString ShownTarget(const CString& pathOrConnection);

// Replaces the passwords of the connection string in a message of a driver, which may repeat that string, by "***".
KVSHARE_API std::string WithoutPassword(std::string text, const ConnectionPieces& pieces);
