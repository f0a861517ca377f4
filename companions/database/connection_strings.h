// Connection strings: those of the product's databases, and reading any. A connection string is a row of key=value
// pieces, each ended by ";", keys without case; a value in braces may hold semicolons and has a closing brace doubled.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "framework/text.h"

inline constexpr LPCTSTR kSQLiteDriver = _T("Kestrova SQLite3 ODBC Driver");
inline constexpr LPCTSTR kAccessDriver = _T("Microsoft Access Driver (*.mdb, *.accdb)");
inline constexpr LPCTSTR kServerDriver = _T("SQL Server");

// The string for a file by its path; for a server and the operating system's own user; for one with a password. The
// texts are put in as they are, without braces: that is required.
KVSHARE_API CString SQLiteConnection(const CString& filePath);
KVSHARE_API CString AccessConnection(const CString& filePath);
KVSHARE_API CString ServerConnection(const CString& server, const CString& database);
KVSHARE_API CString ServerConnection(const CString& server, const CString& database, const CString& user,
                                     const CString& password);

// A connection string in pieces. What isn't touched stays as it was written.
class KVSHARE_API ConnectionPieces {
 public:
  explicit ConnectionPieces(const CString& text);

  // False for a text that drivers may take in more ways than one, as it comes about when a path, name or password
  // holds a semicolon or begins with a brace: a piece without "=", a key that stands twice, a brace left open, a
  // semicolon in anything but a password, where braces make it plain. False too for more than kMostUnits characters,
  // which are not looked at.
  bool IsSound() const { return sound_; }
  static constexpr int kMostUnits = 8192;
  // The value of the first piece of that key, without its braces; none if there is no such piece. A brace that nothing
  // closes is a character like others.
  std::optional<CString> Value(LPCTSTR key) const;
  // Those of all its pieces.
  std::vector<CString> Values(LPCTSTR key) const;
  // Writes the first piece of that key anew as key=value, or adds it at the end.
  void Set(LPCTSTR key, const CString& value);
  // All pieces, each with its semicolon.
  CString Text() const;

 private:
  struct Piece {
    CString raw;  // without the semicolon
    CString key;
    CString value;
  };
  void Add(const CString& raw);

  std::vector<Piece> pieces_;
  bool sound_ = true;
};

// What may be shown of a path or connection string: a path as it is, of a string its SERVER=x;DATABASE=y. A text with a
// driver, a data source or a password in it is a string.
KVSHARE_API CString ShownTarget(const CString& pathOrConnection);

// A text of a driver or of the system, which may repeat the connection string, without the passwords in it.
KVSHARE_API std::string WithoutPassword(std::string text, const ConnectionPieces& pieces);
