// What the sources that deal with files share. All paths are the system's; results are errno codes, 0 for success.
#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/files.h"

// Makes the folder of the drive that the product path begins with, if it is missing.
void EnsureDriveFolder(LPCWSTR product_path);
// The folder that the path's last component lies in; "." for a bare name.
std::string FolderOf(const std::string& path);
int FlushFolder(const std::string& folder);
// Why an existing file may not be opened for writing or replaced: EISDIR or, if it is read-only, EACCES.
int RefusalToWrite(const std::string& path);
// The system's facts in the words of GetFileAttributesW and GetFileAttributesExW.
DWORD AttributesOf(const struct stat& facts);
WIN32_FILE_ATTRIBUTE_DATA FactsOf(const struct stat& facts);
// Sets the last status for a call on the path and gives false.
bool FailForPath(int code, const std::string& path);
// The file that is written for the path: the target of a link, as far as there is one, so that the link stays.
std::string PathBehindLinks(const std::string& path);
