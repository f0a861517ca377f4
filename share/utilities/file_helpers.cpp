// Free helpers for paths, names and times of files.
#include "share/utilities/file_helpers.h"

#include <string_view>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/time.h"
#include "share/utilities/files_and_folders.h"

namespace {

constexpr std::string_view kPlainMarks = "^&@{}[],$=!_#()%.+~`-";

bool IsCapital(char c) { return c >= 'A' && c <= 'Z'; }
bool IsDigitOrLetter(char c) { return IsCapital(c) || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

}  // namespace

// ---- parts of paths

// Not _wsplitpath, which cuts parts after 255 characters.
int ExtractPathAndFileName(CString path, CString& drive, CString& folder, CString& name, CString& extension) {
  if (path.IsEmpty()) return 0;
  const TextView text = path.View();
  const std::size_t drive_end = path[1] == _T(':') ? 2 : 0;
  const std::size_t name_at = std::max(text.find_last_of(_T("\\/")) + 1, drive_end);  // npos + 1 is 0
  const std::size_t point = std::min(text.find_last_of(_T('.')), text.size());
  const std::size_t extension_at = point < name_at ? text.size() : point;
  drive = CString(text.substr(0, drive_end));
  folder = CString(text.substr(drive_end, name_at - drive_end));
  name = CString(text.substr(name_at, extension_at - name_at));
  extension = CString(text.substr(extension_at));
  return 1;
}

int GetDirectoryName(CString path, CString& folder) {
  CString drive;
  CString place;
  CString name;
  CString extension;
  if (!ExtractPathAndFileName(path, drive, place, name, extension)) return 0;
  folder.Format(_T("%s%s"), drive, place);
  return 1;
}

// ---- files

int CreateTempFileName(const CString& prefix, CString& path) {
  CString folder;
  return QFFileAndFolderUtilities().GetTempFolderLocation(folder) ? CreateTempFileName(folder, prefix, path) : 0;
}

int CreateTempFileName(const CString& folder, const CString& prefix, CString& path) {
  TCHAR buffer[MAX_PATH] = {};
  if (folder.IsEmpty() || GetTempFileNameW(folder, prefix, /*unique=*/0, buffer) == 0) return 0;
  path = buffer;
  return 1;
}

int DoesFileExistAtGivenPath(const CString& path) {
  const int slash = path.ReverseFind(_T('\\'));
  const CString folder = path.Left(slash);
  const CString name = path.Mid(slash + 1);
  if (folder.IsEmpty() || name.IsEmpty()) return 0;
  CList<CString> names;
  QFFileAndFolderUtilities().GetFileNameListFromFolder(folder, names);
  for (POSITION at = names.GetHeadPosition(); at;) {
    if (names.GetNext(at).CompareNoCase(name) == 0) return 1;
  }
  return 0;
}

// ---- characters

int HasSpecialCharacters(const CString& text) {
  for (const char c : ToUtf8(text)) {
    if (!IsDigitOrLetter(c) && kPlainMarks.find(c) == kPlainMarks.npos) return 1;
  }
  return 0;
}

CString RemoveSpecialCharacters(const CString& text) {
  std::string kept;
  for (const char c : ToUtf8(text)) {
    if (IsDigitOrLetter(c)) kept += IsCapital(c) ? char(c - 'A' + 'a') : c;
  }
  return FromUtf8(kept);
}

// ---- times

CString Convert_FILETIME_ToString(const FILETIME& time) {
  SYSTEMTIME fields;
  CString text;
  if (!FileTimeToSystemTime(&time, &fields)) return text;
  text.Format(_T("%d-%02d-%02d %02d:%02d:%02d"), fields.wYear, fields.wMonth, fields.wDay, fields.wHour, fields.wMinute,
              fields.wSecond);
  return text;
}

CString Convert_FILETIME_LocalFileTime_ToString(const FILETIME& time) {
  FILETIME local;
  return FileTimeToLocalFileTime(&time, &local) ? Convert_FILETIME_ToString(local) : CString();
}
