// "database.config", the XML file with the list of technology databases to which a user may connect. Reading adds a
// missing mark to a single entry; writing changes the marks and nothing else.
//
//   <configuration>
//     <applicationSettings>
//       <!-- one node before the entries -->
//       <setting databaseType="sqlite" Default="True">
//         <filePath>TechDB.kvdb</filePath><description>Delivered with the product</description>
//       </setting>
//       <setting databaseType="ms-access"> <filePath>D:\plant\tech.mdb</filePath> </setting>
//       <setting databaseType="sql">
//         <serverID>plant7</serverID><authenticationMode>windows</authenticationMode>
//         <userID/><password/><databaseName>tech</databaseName>
//       </setting>
//     </applicationSettings>
//   </configuration>
//
// The names "applicationSettings" and "setting", the types and "True" are compared without case. A file path without a
// backslash is a name in the folder of "database.config". Reading skips an entry of another type, and an entry of a
// file without a path. Paths are product paths. Nothing is shown, and reading throws nothing.
#pragma once

#include <string>
#include <vector>

#include "share/utilities/tech_db_config.h"

// A larger file is not read; further entries are skipped.
inline constexpr std::size_t kTechDBConfigMostBytes = std::size_t{4} << 20;
inline constexpr int kTechDBConfigMostEntries = 10000;

// The file's name, appended to the folder of each call.
inline constexpr LPCTSTR kTechDBConfigFile = _T("database.config");

// Adds a missing mark to the file in the folder, then appends the file's entries to info: 1. folder ends with a
// backslash. If the file is missing and the file defaultDatabase exists, it appends that database as an active
// entry: 1. Otherwise 0 and nothing is appended: for an empty folder, and for a file that cannot be read or has no
// "applicationSettings".
KVSHARE_API int ReadTechDBConfig(const CString& folder, const CString& defaultDatabase, QFTechDBConfigInfo& info);

// A reason why an entry of the file, or the whole file, is not used as it is written.
struct TechDBConfigFault {
  int line = 0;  // of the file, from 1; 0 if unknown
  int column = 0;
  std::string text;      // one line, in UTF-8
  bool dropped = false;  // the entry, or the whole file, is not in the list
};

// The faults of the file in the folder, in file order; none for a missing file. folder ends with a backslash. Changes
// nothing.
KVSHARE_API std::vector<TechDBConfigFault> FindTechDBConfigFaults(const CString& folder);

// Writes the active flags of a list that was read from the file: 1. 0 if the file could not be saved, or does not match
// the list; it then does not change. To match, "applicationSettings" must have one child more than the list has
// entries, any first child (a comment, too), and child i + 1 must be a "setting" of entry i's type.
KVSHARE_API int WriteTechDBConfig(const CString& folder, const QFTechDBConfigInfo& info);
