// Drivers by name, and the system's paths in connection strings.
#include "companions/database/internal/drivers.h"

#include <cstdio>

#include "companions/database/internal/odbc_calls.h"
#include "platform/files.h"
#include "platform/odbc.h"
#include "platform/process.h"
#include "platform/profile.h"

namespace kvdatabase {
namespace {

constexpr int kMostPathBytes = 1000;  // as much as the driver manager has room for
constexpr std::size_t kMostNameBytes = 255;

// What has a driver or the driver manager load code, write files or take over settings. A name or path that smuggles
// it into a connection string gets no farther than here.
constexpr LPCTSTR kRefused[] = {_T("LoadExt"),  _T("TraceFile"), _T("DumpFile"),   _T("DumpFileAppend"), _T("FileDSN"),
                                _T("SaveFile"), _T("DMEnvAttr"), _T("DMConnAttr"), _T("DMStmtAttr")};

// The library that the machine's or the user's registrations name for a driver; empty if they have none.
std::string Registered(const std::string& driver) {
  char library[kMostPathBytes] = {};
  SQLGetPrivateProfileString(driver.c_str(), "Driver", "", library, sizeof library, "odbcinst.ini");
  return library;
}

// etc/kestrova/odbcinst.ini beside the folder that this library lies in; empty if that is nowhere. The driver manager
// can't be asked for it: it takes every file of that name for the machine's.
CString OwnRegistrations() {
  TCHAR file[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameW(GetModuleHandleW(_T("KVSHAREu")), file, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return CString();
  CString folder(file);
  for (int i = 0; i < 2; ++i) folder = folder.Left(folder.ReverseFind(_T('\\')));
  return folder + _T("\\etc\\kestrova\\odbcinst.ini");
}

// The driver's library, put into the pieces if the driver manager can't find it by the name.
std::string FindDriver(ConnectionPieces& pieces) {
  std::string name = ToUtf8(pieces.Value(_T("Driver")).value_or(CString()));
  if (name.empty()) return name;  // a data source
  if (name.size() > kMostNameBytes || name.find('/') != std::string::npos)
    Throw("an ODBC driver has to be named as it is registered, not by its file");
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

// Whether the file begins as Access files do. The Access driver says of others on stderr that they are not there.
bool IsAccessFile(const CString& path) {
  std::string start(20, '\0');
  FILE* const file = _wfopen(path, _T("rb"));
  if (!file) return false;
  start.resize(std::fread(start.data(), 1, start.size(), file));
  std::fclose(file);
  return start.find("Standard Jet DB") == 4 || start.find("Standard ACE DB") == 4;
}

// Paths come in the product's form, and only here become the system's. The Access driver knows its key in upper case
// alone.
void FindFile(ConnectionPieces& pieces, bool access) {
  for (LPCTSTR key : {_T("DATABASE"), _T("DBQ")}) {
    const std::optional<CString> path = pieces.Value(key);
    if (!path || path->Find(_T('\\')) < 0) continue;
    const std::string file = SystemPathFromProduct(*path);
    if (_waccess(*path, 0) != 0) Throw("there is no database file " + ToUtf8(*path));
    if (access && !IsAccessFile(*path)) Throw(ToUtf8(*path) + " is no Access database, or can't be read");
    if (file.find(';') != std::string::npos) Throw("a database file can't have a semicolon in its path: " + file);
    pieces.Set(key, FromUtf8(file));
  }
}

}  // namespace

CString ForDriverManager(const ConnectionPieces& given) {
  ConnectionPieces pieces = given;
  for (LPCTSTR key : kRefused) {
    if (pieces.Value(key)) Throw("a connection string with \"" + ToUtf8(CString(key)) + "\" is not opened");
  }
  std::string library = FindDriver(pieces);
  library.erase(0, library.rfind('/') + 1);
  const auto is = [&library](const char* driver) { return library.find(driver) != std::string::npos; };
  FindFile(pieces, is("mdbodbc"));
  // Left to find out the protocol's version by itself, this driver tries one after the other, each for the whole time
  // that was allowed for all.
  if (is("tdsodbc") && !pieces.Value(_T("TDS_Version"))) pieces.Set(_T("TDS_Version"), _T("7.4"));
  if (is("tdsodbc")) pieces.Set(_T("ClientCharset"), _T("UTF-8"));
  if (is("sqlite")) {
    pieces.Set(_T("NoCreat"), _T("1"));
    // Under the Access driver's name it is told the file by the other's key.
    const std::optional<CString> file = pieces.Value(_T("DBQ"));
    if (file && !pieces.Value(_T("DATABASE"))) pieces.Set(_T("DATABASE"), *file);
  }
  return pieces.Text();
}

}  // namespace kvdatabase
