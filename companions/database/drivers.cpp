// Looking up drivers by name, and converting paths in connection strings.
#include "companions/database/internal/drivers.h"

#include <cstdio>
#include <mutex>

#include "companions/database/internal/odbc_calls.h"
#include "platform/files.h"
#include "platform/odbc.h"
#include "platform/process.h"
#include "platform/profile.h"

namespace kvdatabase {
namespace {

constexpr int kMostPathUnits = 1000;  // the driver manager's limit
constexpr std::size_t kMostNameBytes = 255;

// Serializes the changes of the driver manager's mode.
std::mutex& SourcesMutex() {
  static std::mutex& mutex = *new std::mutex;  // never destroyed: databases may be opened while the process ends
  return mutex;
}

// The path of etc/kestrova/odbcinst.ini beside the folder of this library; empty if that folder is unknown. It is not
// read through the driver manager, which would read the machine's file for any file of that name.
CString OwnRegistrations() {
  TCHAR file[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameW(GetModuleHandleW(_T("KVSHAREu")), file, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return CString();
  CString folder(file);
  for (int i = 0; i < 2; ++i) folder = folder.Left(folder.ReverseFind(_T('\\')));
  return folder + _T("\\etc\\kestrova\\odbcinst.ini");
}

// Returns the driver's library. Writes its path to the pieces if the driver manager does not know the driver's name.
std::string FindDriver(ConnectionPieces& pieces) {
  std::string name = ToUtf8(pieces.Value(_T("Driver")).value_or(CString()));
  if (name.empty()) Throw("the connection string names no driver");
  if (name.size() > kMostNameBytes || name.find('/') != std::string::npos)
    Throw("name the ODBC driver as it is registered, not by its file");
  std::string library = RegisteredWithOdbc("odbcinst.ini", name, "Driver");
  if (!library.empty()) return library;
  const CString own = OwnRegistrations();
  TCHAR path[kMostPathUnits] = {};
  GetPrivateProfileStringW(FromUtf8(name), _T("Driver"), _T(""), path, kMostPathUnits, own);
  if (path[0] == TCHAR(0)) {
    Throw("the ODBC driver \"" + name + "\" is not registered, neither on this machine nor in " + ToUtf8(own) +
          ": install its package and run scripts/build.sh again, or register it in an odbcinst.ini");
  }
  pieces.Set(_T("Driver"), path);
  return ToUtf8(CString(path));
}

// Whether the file has the signature of an Access file. For any other file the Access driver prints a misleading "not
// found" to stderr.
bool IsAccessFile(const CString& path) {
  std::string start(20, '\0');
  FILE* const file = _wfopen(path, _T("rb"));
  if (!file) return false;
  start.resize(std::fread(start.data(), 1, start.size(), file));
  std::fclose(file);
  return start.find("Standard Jet DB") == 4 || start.find("Standard ACE DB") == 4;
}

// Checks that the database file exists and converts its path to the system's form. The keys are written in upper case,
// because the Access driver accepts no other form.
void FindFile(ConnectionPieces& pieces, bool access) {
  for (LPCTSTR key : {_T("DATABASE"), _T("DBQ")}) {
    const std::optional<CString> path = pieces.Value(key);
    if (!path || path->Find(_T('\\')) < 0) continue;
    const std::string file = SystemPathFromProduct(*path);
    const DWORD attributes = GetFileAttributesW(*path);
    const DWORD status = GetLastError();
    if (attributes == INVALID_FILE_ATTRIBUTES) {
      const bool missing = status == DWORD(ERROR_FILE_NOT_FOUND) || status == DWORD(ERROR_PATH_NOT_FOUND);
      Throw(missing ? "there is no database file " + file : "cannot read " + file + ": " + ErrorText(status));
    }
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) Throw(file + " is a folder, not a database file");
    if (access && !IsAccessFile(*path)) Throw(file + " is not an Access database or cannot be read");
    if (file.find(';') != std::string::npos) Throw("the path of a database file cannot contain a semicolon: " + file);
    if (ToUtf8(FromUtf8(file)) != file) Throw("the path of a database file must be UTF-8: " + ToUtf8(FromUtf8(file)));
    pieces.Set(key, FromUtf8(file));
  }
}

// Adds the driver of a data source, so that the driver manager need not search for the source.
void FindSource(ConnectionPieces& pieces) {
  const std::string source = ToUtf8(pieces.Value(_T("DSN")).value_or(CString()));
  std::string driver;
  if (!source.empty() && source.size() <= kMostNameBytes) driver = RegisteredWithOdbc("odbc.ini", source, "Driver");
  if (driver.empty()) {
    Throw("there is no data source \"" + source +
          "\" in the system's odbc.ini; data sources of a single user are not used");
  }
  pieces.Set(_T("Driver"), FromUtf8(driver));
}

}  // namespace

SystemSources::SystemSources() : before_(ODBC_BOTH_DSN) {
  SourcesMutex().lock();
  SQLGetConfigMode(&before_);
  SQLSetConfigMode(ODBC_SYSTEM_DSN);
}

SystemSources::~SystemSources() {
  SQLSetConfigMode(before_);
  SourcesMutex().unlock();
}

CString ForDriverManager(const ConnectionPieces& connection) {
  ConnectionPieces pieces = connection;
  if (pieces.Value(_T("DSN"))) {
    FindSource(pieces);
    FindFile(pieces, /*access=*/false);
    return pieces.Text();
  }
  std::string library = FindDriver(pieces);
  library.erase(0, library.find_last_of("\\/") + 1);
  const auto is = [&library](const char* driver) { return library.find(driver) != std::string::npos; };
  FindFile(pieces, is("mdbodbc"));
  // Without a version this driver tries each protocol version in turn, and each try takes the full timeout.
  if (is("tdsodbc") && !pieces.Value(_T("TDS_Version"))) pieces.Set(_T("TDS_Version"), _T("7.4"));
  if (is("tdsodbc")) pieces.Set(_T("ClientCharset"), _T("UTF-8"));
  if (is("sqlite")) {
    pieces.Set(_T("NoCreat"), _T("1"));
    // The SQLite driver may be registered under the Access driver's name; then the file is in DBQ.
    const std::optional<CString> file = pieces.Value(_T("DBQ"));
    if (file && !pieces.Value(_T("DATABASE"))) pieces.Set(_T("DATABASE"), *file);
  }
  return pieces.Text();
}

}  // namespace kvdatabase
