// "database.config", the XML file that lists the technology databases which a user may connect to: read into memory,
// mended where one entry lacks its mark, and written back with the marks changed and nothing else.
//
//   <configuration>
//     <applicationSettings>
//       <!-- one node stands ahead of the entries -->
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
// The names "applicationSettings" and "setting", the types and "True" are taken without case. A file path without a
// backslash is a name in the file's own folder. An entry of another type, and one of a file without its path, is passed
// over. Nothing is reported and nothing throws; paths are in the product's form.
#pragma once

#include "share/utilities/tech_db_config.h"

// Larger files, and further entries, are not read.
inline constexpr std::size_t kTechDBConfigMostBytes = std::size_t{4} << 20;
inline constexpr int kTechDBConfigMostEntries = 10000;

// The file's name, which is appended to the folder that the calls are given.
inline constexpr LPCTSTR kTechDBConfigFile = _T("database.config");

// Appends the entries of the file in that folder, which ends in a backslash, after mending it: 1. If there is no such
// file but one at defaultDatabase, that database is appended as the one active entry: 1. Else, for an empty folder, and
// for a file that can't be read or has no "applicationSettings": 0, with nothing appended.
KVSHARE_API int ReadTechDBConfig(const CString& folder, const CString& defaultDatabase, QFTechDBConfigInfo& info);

// Writes the active flags of the list that was read from the file: 1 if it was saved. 0, with the file left alone, if
// it isn't the list's: "applicationSettings" must have just one child more than the list has entries, whatever that
// first one is, a comment counted; and child i + 1 must be a "setting" of entry i's type.
KVSHARE_API int WriteTechDBConfig(const CString& folder, const QFTechDBConfigInfo& info);
