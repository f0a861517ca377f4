// QFFileAndFolderUtilities, operations on files and folders by their paths.
//
// Paths are the product's (platform/paths.h). Every operation gives 1 for success and 0 for failure unless it says
// otherwise; nothing throws and nothing is shown. An object holds no data, is made where it is needed and may be used
// on any thread. A file here is anything but a folder; a link counts as what it leads to.
//
// Names that are too long for the system, folders without rights and full disks are failures like any other: the
// operation gives 0, and what stood under a name is whole.
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

  // Makes one folder level; 0 also if the folder is there already.
  int CreateDirectoryW(CString& path);
  // Deletes a folder with all that lies in it, of whatever depth. A link is deleted, never what it leads to, also where
  // the path itself is one. 0 if anything could not be deleted; the rest is gone.
  int DeleteDirectory(CString& path);
  // Copies a folder with all that lies in it into target, which is made as needed (its parent has to exist) and may lie
  // inside the source. Files that are there are replaced; each is copied beside and renamed, so that none is ever half
  // there. Links to files are copied as what they lead to; links to folders are left out. 0 if anything was left out
  // or could not be copied; the rest stands. Where names are kept with their case, each new file costs a look through
  // its folder: thousands of files in one folder take seconds.
  int CopyDirectoryWithContents(const CString& source, const CString& target);

  // ---- lists; 0, with nothing appended, if the folder cannot be read

  // Append the names of the folder's files, of those that are not empty, and of the folders in it.
  int GetFileNameListFromFolder(const CString& folder, CList<CString>& names);
  int GetNonZeroSizeFileNameListFromFolder(const CString& folder, CList<CString>& names);
  int GetDirectoriesInFolder(const CString& folder, CList<CString>& names);
  // The name of the first file that matches a pattern with * and ?; 0, with name left alone, if there is none.
  int GetFirstMatchingFileInFolder(const CString& folder, const CString& pattern, CString& name);

  // ---- files

  int DoesFileExist(const CString& path);
  // The file's size as text: "%.2f KB" of 1024 bytes with the flag, "%d bytes" without. Empty for an empty file and for
  // none.
  CString GetFileSize(const CString& path, int inKilobytes);
  // Tries it: makes a file "test_%d_%d_%d" in the folder and deletes it again.
  int HasCreateFilePermission(CString folder);

  // ---- temporary files

  // A new empty file with a unique name in the folder for temporary files. path is left alone on failure.
  int CreateTempFileName(CString& path);
  // The folder for temporary files, ending in a backslash; 0, with an empty text, if it has 260 characters or more.
  int GetTempFolderLocation(CString& folder);
  // 1 if the text of the path begins with that folder, in any case.
  int IsFileInTempDirectory(const CString& path);

  // ---- texts of paths; they touch no file

  // Puts a point ahead of an extension that has none; an empty one becomes ".".
  int EnsureFileExtHasDot(CString& extension);
  // Puts a backslash behind a path that does not end in one; an empty one becomes "\".
  int EnsureFolderPathEndsWithSlash(CString& folder);
  // Both joined with exactly one backslash.
  int ConcatFolderPathFileName(const CString& folder, const CString& name, CString& path);
  // What stands behind the last backslash: name and extension. 0 for an empty path.
  int GetFileName(const CString& path, CString& name);
  // The drive and the folder, with its backslash. 0 for an empty path.
  int GetDirectoryName(const CString& path, CString& folder);
  // Replaces doubled backslashes by single ones until there are none from the second character on: the two at the start
  // of a network path stay.
  int RemoveExtraSlaces(CString& path);
};
