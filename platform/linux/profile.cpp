// The profile calls: their arguments, buffers and results. profile_text.cpp parses the file.
#include "platform/profile.h"

#include <algorithm>
#include <cerrno>
#include <initializer_list>

#include "platform/linux/drives.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/linux/profile_file.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace {

using kvprofile::Profile;
using ProfilePointer = std::shared_ptr<const Profile>;

// ---- arguments

std::u16string_view WithoutTrailingSpaces(LPCWSTR text) {
  const std::u16string_view all = text ? text : u"";
  return all.substr(0, all.find_last_not_of(u' ') + 1);  // npos + 1 is 0
}

std::u16string_view Trimmed(std::u16string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(u' '), text.size()));
  return text.substr(0, text.find_last_not_of(u' ') + 1);
}

std::u16string_view Trimmed(LPCWSTR text) { return Trimmed(std::u16string_view(text)); }

// ---- results

// Copies a text; the status reports a cut text.
DWORD CopyText(std::u16string_view text, LPWSTR buffer, DWORD units) {
  const std::size_t count = std::min<std::size_t>(text.size(), units - 1);
  text.copy(buffer, count);
  buffer[count] = 0;
  if (count < text.size()) SetLastError(ERROR_MORE_DATA);
  return DWORD(count);
}

// Copies a list: a NUL after each entry, and one more. A list that fills the buffer counts as cut, because existing
// programs take the result units - 2 for that.
DWORD CopyList(std::u16string_view list, LPWSTR buffer, DWORD units) {
  if (list.empty() || list.size() + 1 < units) {
    list.copy(buffer, list.size());
    buffer[list.size()] = 0;
    if (list.empty() && units > 1) buffer[1] = 0;  // an empty list has two NULs
    return DWORD(list.size());
  }
  SetLastError(ERROR_MORE_DATA);
  const DWORD count = units > 2 ? units - 2 : 0;
  list.copy(buffer, count);
  for (DWORD i = count; i < units; ++i) buffer[i] = 0;
  return count;
}

// ---- the file

// Returns null on failure and sets the last status.
ProfilePointer Open(LPCWSTR path) {
  ProfilePointer profile;
  std::string system = SystemPathAsWritten(path);
  int code = kvprofile::Read(system, profile);
  if (code == ENOENT || code == ENOTDIR) {
    system = SystemPathFromProduct(path);
    code = kvprofile::Read(system, profile);
  }
  if (code == 0) return profile;
  if (path)
    FailForPath(code, system);
  else
    SetLastError(ERROR_FILE_NOT_FOUND);
  return nullptr;
}

// Replaces the file by the result of `change`, which writes the texts; without a result the file stays.
template <class Change>
BOOL Write(LPCWSTR path, std::initializer_list<std::u16string_view> texts, Change change) {
  if (!path || !*path) return FailWithStatus(ERROR_ACCESS_DENIED);
  EnsureDriveFolder(path);
  const std::string target = PathBehindLinks(SystemPathFromProduct(path));
  kvprofile::FolderLock lock;
  if (const int code = lock.Lock(FolderOf(target))) return FailForPath(code, target);
  ProfilePointer profile;
  const int code = kvprofile::Read(target, profile);
  if (code == ENOENT)
    profile = Profile::FromBytes({});
  else if (code != 0)
    return FailForPath(code, target);
  const auto lacks = [&](std::u16string_view text) { return !profile->CanHold(text); };
  if (std::any_of(texts.begin(), texts.end(), lacks)) return FailWithStatus(ERROR_NO_UNICODE_TRANSLATION);
  const std::optional<std::string> bytes = change(*profile);
  if (!bytes) return TRUE;
  if (bytes->size() > kvprofile::kMostBytes) return FailWithStatus(ERROR_FILE_TOO_LARGE);
  const LONG status = WriteFileSafely(path, *bytes);
  return status == ERROR_SUCCESS || FailWithStatus(status);
}

}  // namespace

// ---- reading

DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultText, LPWSTR buffer, DWORD units,
                               LPCWSTR path) {
  if (!section) return GetPrivateProfileSectionNamesW(buffer, units, path);
  if (!buffer || units == 0) return 0;
  const ProfilePointer profile = Open(path);
  std::u16string text;
  const bool found = profile && (key ? profile->FindValue(Trimmed(section), Trimmed(key), text)
                                     : profile->ListKeys(Trimmed(section), text));
  if (profile && !found) SetLastError(ERROR_FILE_NOT_FOUND);
  if (!key) return CopyList(text, buffer, units);
  return CopyText(found ? std::u16string_view(text) : WithoutTrailingSpaces(defaultText), buffer, units);
}

DWORD GetPrivateProfileSectionNamesW(LPWSTR buffer, DWORD units, LPCWSTR path) {
  if (!buffer || units == 0) return 0;
  const ProfilePointer profile = Open(path);
  return CopyList(profile ? profile->SectionNames() : std::u16string(), buffer, units);
}

DWORD GetPrivateProfileSectionW(LPCWSTR section, LPWSTR buffer, DWORD units, LPCWSTR path) {
  if (!section || !buffer || units == 0) return DWORD(FailWithStatus(ERROR_INVALID_PARAMETER));
  const ProfilePointer profile = Open(path);
  std::u16string list;
  const bool found = profile && profile->ListLines(Trimmed(section), list);
  if (profile) SetLastError(found ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
  return CopyList(list, buffer, units);
}

// ---- writing

BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR path) {
  if (!section) {
    if (!key && !value) kvprofile::ForgetAll();  // this form of the call drops the cache and still fails
    return FailWithStatus(ERROR_FILE_NOT_FOUND);
  }
  if (!key) return Write(path, {}, [&](const Profile& profile) { return profile.WithoutSection(Trimmed(section)); });
  if (!value)
    return Write(path, {}, [&](const Profile& profile) { return profile.WithoutKey(Trimmed(section), Trimmed(key)); });
  return Write(path, {section, key, value}, [&](const Profile& profile) {
    return std::optional(profile.WithValue(Trimmed(section), Trimmed(key), Trimmed(value)));
  });
}

BOOL WritePrivateProfileSectionW(LPCWSTR section, LPCWSTR list, LPCWSTR path) {
  if (!section) return FailWithStatus(ERROR_INVALID_PARAMETER);
  if (!list) return Write(path, {}, [&](const Profile& profile) { return profile.WithoutSection(Trimmed(section)); });
  std::u16string lines;
  for (LPCWSTR entry = list; *entry; entry += std::u16string_view(entry).size() + 1) {
    lines += Trimmed(entry);
    lines += u'\0';
  }
  return Write(path, {section, lines},
               [&](const Profile& profile) { return std::optional(profile.WithLines(Trimmed(section), lines)); });
}
