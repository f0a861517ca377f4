// What the sources of this folder share: handles of ODBC and what a failed call says.
//
// Texts go to the drivers and come from them as UTF-8, by the narrow calls. The packaged SQLite driver has no others,
// and what the driver manager makes of wide texts for such a one loses every character beyond the first 65,536.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "companions/database/connection_strings.h"
#include "companions/database/database.h"

namespace kvdatabase {

// A handle of ODBC, freed by the destructor.
class Handle {
 public:
  Handle() = default;
  // Of a kind (SQL_HANDLE_...) below another; throws if there is none to be had.
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

// Throws what the handle's last call said, with what was tried ahead of it and without the password of the pieces.
[[noreturn]] void Throw(const Handle& handle, const std::string& tried, const ConnectionPieces& pieces);
// Throws a failure of our own.
[[noreturn]] void Throw(const std::string& message);

bool Succeeded(short result);

// One value as text, to be bound to a parameter; none is NULL. It must outlive the statement's run.
struct Parameter {
  explicit Parameter(const std::optional<CString>& text) : null(!text), value(text ? ToUtf8(*text) : std::string()) {}

  bool null;
  std::string value;
  long length = 0;
};

}  // namespace kvdatabase

struct CDaoDatabase::Connection {
  explicit Connection(const CString& text) : pieces(text) {}
  ~Connection();

  // A statement with the parameters, run. Throws if that fails.
  kvdatabase::Handle Run(const CString& sql, std::vector<kvdatabase::Parameter>& parameters) const;

  ConnectionPieces pieces;  // as they were given
  kvdatabase::Handle environment;
  kvdatabase::Handle link;
  bool connected = false;
  bool read_only = false;
  bool takes_semicolons = true;  // behind a statement
  bool tables_read = false;
  std::vector<CDaoTableDefInfo> tables;
};
