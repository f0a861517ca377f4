// QFFileAndFolderUtilities, operations on files and folders by path.
//
// Paths are product paths (platform/paths.h). Every operation returns 1 on success and 0 on failure, if it says nothing
// else. Nothing throws and nothing is shown. An object has no data and may be used on any thread. Everything except a
// folder is a file here; a link counts as its target.
//
// Names that are too long for the system, missing rights and full disks are ordinary failures: the operation returns 0,
// and an existing file keeps its whole content.
#pragma once

#include "framework/list.h"
#include "framework/text.h"

class KVSHARE_API QFFileAndFolderUtilities {
 public:
  QFFileAndFolderUtilities() = default;
  virtual ~QFFileAndFolderUtilities() = default;
  QFFileAndFolderUtilities(const QFFileAndFolderUtilities&) = default;
  QFFileAndFolderUtilities& operator=(const QFFileAndFolderUtilities&) = default;

  // ---- folders

  // Creates a folder in an existing folder. 0 also if the folder exists.
  int CreateDirectoryW(CString& path);
  // Deletes a folder with everything in it, at any depth. Deletes links, also if the path is one, but never their
  // targets. 0 if an entry could not be deleted; the other entries are deleted.
  int DeleteDirectory(CString& path);
  // Copies everything in a folder to target. target is created if necessary (its parent must exist) and may be inside
  // the source. Existing files are replaced: each file is copied under another name and renamed, so that no file is
  // ever incomplete. Copies the target of a link to a file; skips links to folders. Of names in one folder that differ
  // only in case, copies the first in the order of a search (platform/folders.h) and skips the others, because product
  // paths cannot tell them apart. 0 if an entry was skipped or could not be copied; the other entries are copied. On a
  // file system with case-sensitive names each new file needs a search of its folder: thousands of files in one folder
  // take seconds.
  int CopyDirectoryWithContents(const CString& source, const CString& target);

  // ---- lists; 0 and nothing appended if the folder cannot be read

  // Append the names of the folder's files, of its files that are not empty, and of its subfolders.
  int GetFileNameListFromFolder(const CString& folder, CList<CString>& names);
  int GetNonZeroSizeFileNameListFromFolder(const CString& folder, CList<CString>& names);
  int GetDirectoriesInFolder(const CString& folder, CList<CString>& names);
  // Sets name to the first file that matches a pattern with * and ?. 0 without a match; name does not change.
  int GetFirstMatchingFileInFolder(const CString& folder, const CString& pattern, CString& name);

  // ---- files

  int DoesFileExist(const CString& path);
  // The file's size as text: "%.2f KB" of 1024 bytes for nonzero inKilobytes, else "%d bytes". Empty for an empty or
  // missing file.
  CString GetFileSize(const CString& path, int inKilobytes);
  // 1 if a file can be created in the folder. Tries it with a file "test_%d_%d_%d", which it deletes.
  int HasCreateFilePermission(CString folder);

  // ---- temporary files

  // Creates an empty file with a unique name in the folder for temporary files, and sets path. On failure path does not
  // change.
  int CreateTempFileName(CString& path);
  // Sets folder to the folder for temporary files, with a backslash at the end. 0 and an empty text if the path has 260
  // characters or more.
  int GetTempFolderLocation(CString& folder);
  // 1 if the path begins with the folder for temporary files, compared without case.
  int IsFileInTempDirectory(const CString& path);

  // ---- texts of paths; these operations use no file

  // Adds a point before an extension without one; an empty extension becomes ".".
  int EnsureFileExtHasDot(CString& extension);
  // Adds a backslash to a path that does not end with one; an empty path becomes "\".
  int EnsureFolderPathEndsWithSlash(CString& folder);
  // Sets path to folder and name, joined with exactly one backslash.
  int ConcatFolderPathFileName(const CString& folder, const CString& name, CString& path);
  // The name with the extension. 0 for an empty path.
  int GetFileName(const CString& path, CString& name);
  // The drive and the folder, with its backslash. 0 for an empty path.
  int GetDirectoryName(const CString& path, CString& folder);
  // Reduces each row of backslashes to one, from the second character on. So the two at the start of a network path
  // stay.
  int RemoveExtraSlaces(CString& path);
};
