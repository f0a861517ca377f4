// Functions that the file sources share. All paths are system paths; results are errno codes, 0 for success.
#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/files.h"

// Creates the folder of the product path's drive if it is missing.
void EnsureDriveFolder(LPCWSTR product_path);
// The folder of the path's last component; "." for a path without a folder.
std::string FolderOf(const std::string& path);
int FlushFolder(const std::string& folder);
// Checks a file before writing or replacing: EISDIR for a folder, EACCES for a read-only file, EILSEQ for a missing one
// whose name cannot be new, 0 if allowed.
int RefusalToWrite(const std::string& path);
// False if the path's last component has a character that the platform reserves: * ? " < > |
bool CanBeNew(const std::string& path);
// The attributes and file data of GetFileAttributesW and GetFileAttributesExW.
DWORD AttributesOf(const struct stat& facts);
WIN32_FILE_ATTRIBUTE_DATA FactsOf(const struct stat& facts);
// Sets the last status for a failed call on the path and returns false.
bool FailForPath(int code, const std::string& path);
// Resolves links of the path's last component, so that writing replaces the target and the link stays.
std::string PathBehindLinks(const std::string& path);
