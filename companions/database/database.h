// CDaoDatabase, a connection to a database through ODBC.
//
// An operation that fails throws CDaoException by value, with a message of one line that names the operation, the
// target and the reason and contains no password. Destructors do not throw. One thread at a time may use a database and
// its recordsets.
//
// A driver is found by the name in the connection string: first in the registrations of the machine or user
// (odbcinst.ini in unixODBC's folders, or in the folder ODBCSYSINI), then in etc/kestrova/odbcinst.ini beside the
// folder of this library, which the installation writes. The registrations of the machine are never changed.
#pragma once

#include <memory>
#include <string>

#include "framework/exception.h"

class KVSHARE_API CDaoException : public CException {
 public:
  CDaoException(std::string message, CString state, LONG native);

  CString m_strState;  // the five characters of SQLSTATE; empty if the failure is not the driver's
  LONG m_lNative;      // the database's own error number, or 0
};

// One table or view of a database.
struct CDaoTableDefInfo {
  CString m_strName;
  CString m_strSchema;        // empty if the database has no schemas
  BOOL m_bUpdatable = FALSE;  // TRUE for a table, FALSE for a view
  LONG m_lRecordCount = -1;   // -1 if not counted
};

class KVSHARE_API CDaoDatabase {
 public:
  // isSQLite selects the driver for Open with a file path: nonzero for SQLite, 0 for Access. is64Bit is ignored; kept
  // for existing modules.
  CDaoDatabase(int is64Bit, int isSQLite);
  ~CDaoDatabase();
  CDaoDatabase(const CDaoDatabase&) = delete;
  CDaoDatabase& operator=(const CDaoDatabase&) = delete;

  // Opens a file by its path in the product's form, or the target of a connection string that begins with "Driver=" or
  // "DSN=". In a connection string, a Database or Dbq value with a backslash is such a path. The file must exist; it is
  // not created. "Connection Timeout" is the time limit for connecting, in seconds. An open database is closed first.
  // Throws for a connection string that ConnectionPieces::Refusal refuses, for a driver named by its file, and for a
  // file whose path has a semicolon or is not UTF-8. A DSN must be one of the system's data sources; the user's file of
  // data sources is neither read nor created.
  //
  // With readOnly, a statement must begin with SELECT, WITH, VALUES or EXPLAIN, otherwise it throws. A query that would
  // change data anyway is refused by SQLite; other databases roll the change back when the connection closes.
  void Open(const CString& pathOrConnection, bool readOnly = false);
  bool IsOpen() const;
  // Destroy or close its recordsets first. Does nothing if the database is not open.
  void Close();

  // The driver's name in the connection string; its file and version, empty if the driver reports neither; the
  // database program and its version, such as "SQLite 3.40.1".
  CString GetDriverName() const;
  CString GetDriverFile() const;
  CString GetVersion() const;

  // The number of tables and views without system tables, at most 100,000. The first call reads the list and keeps it
  // until Close.
  int GetTableDefCount();
  // The table at an index from 0, sorted by schema and name; throws for any other index. countRecords runs a query that
  // counts the records.
  void GetTableDefInfo(int index, CDaoTableDefInfo& info, bool countRecords = false);

  // Runs a statement that returns no records. Returns the number of changed records, or -1 if the driver does not
  // report it.
  LONG Execute(const CString& sql);

 private:
  friend class CDaoRecordset;
  struct Connection;
  Connection& Opened() const;

  int isSQLite_;
  std::unique_ptr<Connection> connection_;
};
