// CDaoDatabase, a connection to a database through ODBC, under the name that the product's database wrapper has.
//
// What fails throws CDaoException, by value, with one line that tells what, where and why and never holds a password;
// the destructors don't throw. Texts are wide. A database, its recordsets included, is used by one thread at a time.
//
// Drivers are found by the name in the connection string: first as the machine or the user registered them
// (odbcinst.ini of unixODBC's folders, or of the folder ODBCSYSINI), then in etc/kestrova/odbcinst.ini beside this
// library's folder, which its installation writes. Nothing of the machine's own registration is changed.
#pragma once

#include <memory>
#include <string>

#include "framework/exception.h"

class KVSHARE_API CDaoException : public CException {
 public:
  CDaoException(std::string message, CString state, LONG native);

  CString m_strState;  // the five characters of SQLSTATE; empty if it wasn't the driver that failed
  LONG m_lNative;      // the database's own number for it, or 0
};

// What a database tells of one of its tables.
struct CDaoTableDefInfo {
  CString m_strName;
  CString m_strSchema;        // its owner's, or empty
  BOOL m_bUpdatable = FALSE;  // a table; views are none
  LONG m_lRecordCount = -1;   // if asked for, else -1
};

class KVSHARE_API CDaoDatabase {
 public:
  // The flags say which driver opens a file that is given by its path alone. The edition makes no difference here.
  CDaoDatabase(int is64Bit, int isSQLite);
  ~CDaoDatabase();
  CDaoDatabase(const CDaoDatabase&) = delete;
  CDaoDatabase& operator=(const CDaoDatabase&) = delete;

  // Opens a file by its path in the product's form, or what a connection string that begins with "Driver=" or "DSN="
  // names. In it, a Database or Dbq with a backslash is a path, and a file has to exist: none is made. "Connection
  // Timeout", in seconds, is how long the server may take to answer. An open database is closed first. A text that can
  // be taken in more ways than one (connection_strings.h) fails, so does one that names a driver by its file or has
  // drivers load code or write files.
  //
  // Open for reading alone, a database takes no statement but a query: one that doesn't begin with SELECT, WITH, VALUES
  // or EXPLAIN fails. SQLite refuses whatever else would change something, and a server takes it back at the end.
  void Open(const CString& pathOrConnection, bool readOnly = false);
  bool IsOpen() const;
  // Its recordsets have to be closed before.
  void Close();

  // The driver's name as the connection string or flag has it, its file and version (empty if it tells neither), the
  // database's program and version such as "SQLite 3.40.1".
  CString GetDriverName() const;
  CString GetDriverFile() const;
  CString GetVersion() const;

  // The number of tables and views, system tables left out, read by the first call; and one of them, from 0 up, in the
  // order of their names. An index outside fails. Counting the records takes a query.
  int GetTableDefCount();
  void GetTableDefInfo(int index, CDaoTableDefInfo& info, bool countRecords = false);

  // Runs a statement that gives no records; gives the number of records changed, -1 if the driver doesn't tell.
  LONG Execute(const CString& sql);

 private:
  friend class CDaoRecordset;
  struct Connection;
  Connection& Opened() const;

  int isSQLite_;
  std::unique_ptr<Connection> connection_;
};
