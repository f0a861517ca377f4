// Files and folders on the platform's calls. Walks keep a list of folders instead of recursing, so that deep folders do
// not overflow the stack.
#include "share/utilities/files_and_folders.h"

#include <set>
#include <vector>

#include "framework/file_find.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/threads.h"
#include "share/utilities/file_helpers.h"

namespace {

constexpr LPCTSTR kEverything = _T("*.*");

bool EndsWithSlash(const CString& path) {
  const TCHAR last = path[path.GetLength() - 1];
  return last == _T('\\') || last == _T('/');
}

CString JoinPath(const CString& folder, LPCTSTR name) {
  return EndsWithSlash(folder) ? folder + name : folder + _T('\\') + name;
}

// Without the backslash, a search finds the link itself, not its target.
CString WithoutTrailingSlashes(CString path) {
  while (path.GetLength() > 1 && EndsWithSlash(path)) path.Delete(path.GetLength() - 1);
  return path;
}

bool IsLink(const CString& path) {
  CFileFind find;
  if (!find.FindFile(WithoutTrailingSlashes(path))) return false;
  find.FindNextFile();
  return find.IsLink() != FALSE;
}

// Calls use(find) for each entry except "." and "..". False if the folder cannot be read.
template <class Use>
bool ForEachEntry(const CString& folder, LPCTSTR pattern, Use use) {
  CFileFind find;
  BOOL more = find.FindFile(JoinPath(folder, pattern));
  if (!more) return GetLastError() == DWORD(ERROR_FILE_NOT_FOUND);  // the folder exists, and nothing matches
  while (more) {
    more = find.FindNextFile();
    if (!find.IsDots()) use(find);
  }
  return true;
}

template <class Wanted>
int AppendNames(const CString& folder, CList<CString>& names, Wanted wanted) {
  if (folder.IsEmpty()) return 0;
  return ForEachEntry(folder, kEverything, [&](const CFileFind& find) {
    if (wanted(find)) names.AddTail(find.GetFileName());
  });
}

bool IsFile(const CFileFind& find) { return !find.IsDirectory(); }

struct LessWithoutCase {
  bool operator()(const CString& a, const CString& b) const { return a.CompareNoCase(b) < 0; }
};

}  // namespace

// ---- folders

int QFFileAndFolderUtilities::CreateDirectoryW(CString& path) { return ::CreateDirectoryW(path, nullptr) ? 1 : 0; }

int QFFileAndFolderUtilities::DeleteDirectory(CString& path) {
  if (path.IsEmpty()) return 0;
  if (IsLink(path)) return RemoveDirectoryW(path) ? 1 : 0;
  bool done = true;
  std::vector<CString> folders = {path};  // a folder comes before its subfolders
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const CString folder = folders[i];
    done &= ForEachEntry(folder, kEverything, [&](const CFileFind& find) {
      const CString entry = find.GetFilePath();
      if (!find.IsDirectory()) {
        done &= DeleteFileW(entry) != FALSE;
      } else if (find.IsLink()) {
        done &= RemoveDirectoryW(entry) != FALSE;
      } else {
        folders.push_back(entry);
      }
    });
  }
  for (std::size_t i = folders.size(); i-- > 0;) done &= RemoveDirectoryW(folders[i]) != FALSE;
  return done ? 1 : 0;
}

int QFFileAndFolderUtilities::CopyDirectoryWithContents(const CString& source, const CString& target) {
  if (source.IsEmpty() || target.IsEmpty()) return 0;
  // List everything before the first copy: otherwise a target inside the source would be copied into itself without
  // end.
  std::vector<CString> folders = {CString()};  // relative to source
  std::vector<CString> files;
  bool done = true;
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const CString folder = folders[i];
    std::set<CString, LessWithoutCase> names;
    const bool listed =
        ForEachEntry(folder.IsEmpty() ? source : JoinPath(source, folder), kEverything, [&](const CFileFind& find) {
          const CString name = folder.IsEmpty() ? find.GetFileName() : JoinPath(folder, find.GetFileName());
          if (!names.insert(find.GetFileName()).second) {
            done = false;
          } else if (!find.IsDirectory()) {
            files.push_back(name);
          } else if (find.IsLink()) {
            done = false;
          } else {
            folders.push_back(name);
          }
        });
    if (!listed && i == 0) return 0;
    done &= listed;
  }
  for (const CString& folder : folders) {
    const CString copy = folder.IsEmpty() ? target : JoinPath(target, folder);
    done &= ::CreateDirectoryW(copy, nullptr) || (GetFileAttributesW(copy) & FILE_ATTRIBUTE_DIRECTORY) != 0;
  }
  for (const CString& file : files) done &= CopyFileW(JoinPath(source, file), JoinPath(target, file), FALSE) != FALSE;
  return done ? 1 : 0;
}

// ---- lists

int QFFileAndFolderUtilities::GetFileNameListFromFolder(const CString& folder, CList<CString>& names) {
  return AppendNames(folder, names, IsFile);
}

int QFFileAndFolderUtilities::GetNonZeroSizeFileNameListFromFolder(const CString& folder, CList<CString>& names) {
  return AppendNames(folder, names, [](const CFileFind& find) { return IsFile(find) && find.GetLength() > 0; });
}

int QFFileAndFolderUtilities::GetDirectoriesInFolder(const CString& folder, CList<CString>& names) {
  return AppendNames(folder, names, [](const CFileFind& find) { return find.IsDirectory() != FALSE; });
}

int QFFileAndFolderUtilities::GetFirstMatchingFileInFolder(const CString& folder, const CString& pattern,
                                                           CString& name) {
  if (folder.IsEmpty() || pattern.IsEmpty()) return 0;
  CFileFind find;
  BOOL more = find.FindFile(JoinPath(folder, pattern));
  while (more) {
    more = find.FindNextFile();
    if (!IsFile(find)) continue;
    name = find.GetFileName();
    return 1;
  }
  return 0;
}

// ---- files

int QFFileAndFolderUtilities::DoesFileExist(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ? 1 : 0;
}

CString QFFileAndFolderUtilities::GetFileSize(const CString& path, int inKilobytes) {
  CString text;
  WIN32_FILE_ATTRIBUTE_DATA facts;
  if (!GetFileAttributesExW(path, GetFileExInfoStandard, &facts)) return text;
  const ULONGLONG bytes = ULONGLONG(facts.nFileSizeHigh) << 32 | facts.nFileSizeLow;
  if (bytes == 0) return text;
  if (inKilobytes) {
    text.Format(_T("%.2f KB"), double(bytes) / 1024.0);
  } else {
    text.Format(_T("%d bytes"), bytes);
  }
  return text;
}

int QFFileAndFolderUtilities::HasCreateFilePermission(CString folder) {
  if (folder.IsEmpty()) return 0;
  CString name;
  name.Format(_T("test_%d_%d_%d"), int(GetCurrentProcessId()), int(GetCurrentThreadId()), 1);
  const CString path = JoinPath(folder, name);
  const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return 0;
  CloseHandle(file);
  DeleteFileW(path);
  return 1;
}

// ---- temporary files

int QFFileAndFolderUtilities::CreateTempFileName(CString& path) { return ::CreateTempFileName(CString(), path); }

int QFFileAndFolderUtilities::GetTempFolderLocation(CString& folder) {
  TCHAR buffer[MAX_PATH] = {};
  const DWORD length = GetTempPathW(MAX_PATH, buffer);
  const bool fits = length > 0 && length < MAX_PATH;
  folder = fits ? buffer : _T("");
  return fits ? 1 : 0;
}

int QFFileAndFolderUtilities::IsFileInTempDirectory(const CString& path) {
  CString folder;
  if (!GetTempFolderLocation(folder)) return 0;
  return path.Left(folder.GetLength()).CompareNoCase(folder) == 0 ? 1 : 0;
}

// ---- texts of paths

int QFFileAndFolderUtilities::EnsureFileExtHasDot(CString& extension) {
  if (extension[0] != _T('.')) extension.Insert(0, _T('.'));
  return 1;
}

int QFFileAndFolderUtilities::EnsureFolderPathEndsWithSlash(CString& folder) {
  if (folder[folder.GetLength() - 1] != _T('\\')) folder += _T('\\');
  return 1;
}

int QFFileAndFolderUtilities::ConcatFolderPathFileName(const CString& folder, const CString& name, CString& path) {
  path = CString(folder).TrimRight(_T('\\')) + _T('\\') + CString(name).TrimLeft(_T('\\'));
  return 1;
}

int QFFileAndFolderUtilities::GetFileName(const CString& path, CString& name) {
  CString drive;
  CString folder;
  CString extension;
  if (!ExtractPathAndFileName(path, drive, folder, name, extension)) return 0;
  name += extension;
  return 1;
}

int QFFileAndFolderUtilities::GetDirectoryName(const CString& path, CString& folder) {
  return ::GetDirectoryName(path, folder);
}

int QFFileAndFolderUtilities::RemoveExtraSlaces(CString& path) {
  const CString first = path.Left(1);
  CString rest = path.Mid(1);
  while (rest.Replace(_T("\\\\"), _T("\\")) > 0) {
  }
  path = first + rest;
  return 1;
}
