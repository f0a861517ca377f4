// Looking up drivers by name, and converting paths in connection strings.
#include "companions/database/internal/drivers.h"

#include <cstdio>

#include "companions/database/internal/odbc_calls.h"
#include "platform/files.h"
#include "platform/odbc.h"
#include "platform/process.h"
#include "platform/profile.h"

namespace kvdatabase {
namespace {

constexpr int kMostPathBytes = 1000;  // the driver manager's limit
constexpr std::size_t kMostNameBytes = 255;

// Keys that make a driver or the driver manager load code, write files or change settings. A path or name could smuggle
// one into a connection string.
constexpr LPCTSTR kRefused[] = {_T("LoadExt"),  _T("TraceFile"), _T("DumpFile"),   _T("DumpFileAppend"), _T("FileDSN"),
                                _T("SaveFile"), _T("DMEnvAttr"), _T("DMConnAttr"), _T("DMStmtAttr")};

// The driver's library in the registrations of the machine or user; empty if the driver is not registered there.
std::string Registered(const std::string& driver) {
  char library[kMostPathBytes] = {};
  SQLGetPrivateProfileString(driver.c_str(), "Driver", "", library, sizeof library, "odbcinst.ini");
  return library;
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
  if (name.empty()) return name;  // a DSN names its driver itself
  if (name.size() > kMostNameBytes || name.find('/') != std::string::npos)
    Throw("name the ODBC driver as it is registered, not by its file");
  std::string library = Registered(name);
  if (!library.empty()) return library;
  const CString own = OwnRegistrations();
  TCHAR path[kMostPathBytes] = {};
  GetPrivateProfileStringW(FromUtf8(name), _T("Driver"), _T(""), path, kMostPathBytes, own);
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
    if (_waccess(*path, 0) != 0) Throw("there is no database file " + ToUtf8(*path));
    if (access && !IsAccessFile(*path)) Throw(ToUtf8(*path) + " is not an Access database or cannot be read");
    if (file.find(';') != std::string::npos) Throw("the path of a database file cannot contain a semicolon: " + file);
    pieces.Set(key, FromUtf8(file));
  }
}

}  // namespace

CString ForDriverManager(const ConnectionPieces& connection) {
  ConnectionPieces pieces = connection;
  for (LPCTSTR key : kRefused) {
    if (pieces.Value(key)) Throw("the key \"" + ToUtf8(CString(key)) + "\" is not allowed in a connection string");
  }
  std::string library = FindDriver(pieces);
  library.erase(0, library.rfind('/') + 1);
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
