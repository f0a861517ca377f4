// Shared by the sources of this folder: ODBC handles, statements and errors.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "companions/database/connection_strings.h"
#include "companions/database/database.h"
#include "platform/odbc.h"

namespace kvdatabase {

// An ODBC handle, freed by the destructor.
class Handle {
 public:
  Handle() = default;
  // Allocates a handle of a kind (SQL_HANDLE_...) under a parent, which is null for an environment. Throws on failure.
  Handle(short kind, void* parent);
  ~Handle();
  Handle(Handle&& other) noexcept;
  Handle& operator=(Handle&& other) noexcept;
  void* Get() const noexcept { return handle_; }
  short Kind() const noexcept { return kind_; }

 private:
  short kind_ = 0;
  void* handle_ = nullptr;
};

// Throws CDaoException with "<action>: <diagnostics of the handle's last call>", without the password in the pieces.
[[noreturn]] void Throw(const Handle& handle, const std::string& action, const ConnectionPieces& pieces);
// Throws CDaoException with that message and no SQLSTATE.
[[noreturn]] void Throw(const std::string& message);

bool Succeeded(short result);

// The text for the drivers. Throws for half a surrogate pair, as in a path that is not UTF-8 (platform/paths.h): a
// database would get another text.
SqlText DriverText(const CString& text);

// A text bound to a parameter of a statement; an empty optional is NULL. It must live until the statement has run.
struct Parameter {
  explicit Parameter(const std::optional<CString>& text) : null(!text), value(text ? DriverText(*text) : SqlText()) {}

  bool null;
  SqlText value;
  SQLLEN length = 0;
};

}  // namespace kvdatabase

struct CDaoDatabase::Connection {
  explicit Connection(const CString& text) : pieces(text) {}
  ~Connection();

  // Runs a statement with the parameters and returns its handle. Throws on failure.
  kvdatabase::Handle Run(const CString& sql, std::vector<kvdatabase::Parameter>& parameters,
                         const std::string& failure = "cannot run the statement") const;

  ConnectionPieces pieces;  // before ForDriverManager
  kvdatabase::Handle environment;
  kvdatabase::Handle link;
  bool connected = false;
  bool read_only = false;
  bool takes_semicolons = true;  // at the end of a statement
  bool tables_read = false;
  std::vector<CDaoTableDefInfo> tables;
};
