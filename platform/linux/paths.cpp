// Paths: conversion to system paths, the search without case, and splitting.
#include "platform/paths.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>

#include "platform/errors.h"
#include "platform/linux/drives.h"
#include "platform/linux/folder_names.h"
#include "platform/linux/user.h"
#include "platform/linux/utf8.h"

namespace {

bool IsLetter(char character) { return (character | 0x20) >= 'a' && (character | 0x20) <= 'z'; }

std::string WithoutTrailingSlashes(std::string path) {
  while (!path.empty() && path.back() == '/') path.pop_back();
  return path;
}

std::string UserDataFolder() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data && *data == '/') return data;
  const char* home = std::getenv("HOME");
  if (home && *home) return std::string(home) + "/.local/share";
  return EffectiveUser().home + "/.local/share";
}

bool Exists(const std::string& path) { return faccessat(AT_FDCWD, path.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0; }

// A component as the platform takes it: without one point at its end and, for the last one of a path, without any
// points and spaces there. "." and ".." stay.
template <class View>
View WithoutEnd(View name, bool is_last) {
  if (name.size() <= 2 && name.find_first_not_of('.') == name.npos) return name;
  if (!is_last) return name.ends_with('.') && name[name.size() - 2] != '.' ? name.substr(0, name.size() - 1) : name;
  while (!name.empty() && (name.back() == '.' || name.back() == ' ')) name.remove_suffix(1);
  return name;
}

// The name of an existing entry of the folder: as written, or without case. Empty if there is none.
std::string FindName(const std::string& folder, std::string_view name, bool is_known_to_miss) {
  if (!is_known_to_miss && Exists(folder + std::string(name))) return std::string(name);
  return FindNameWithoutCase(folder, name);
}

// Resolves the components of `rest` below `base` (empty or ending in a slash): as written or, if that does not exist,
// without case, or without points and spaces at the end. From the first missing component on, the rest only loses such
// ends. Usually everything but the last component exists as written, so the search for the existing part starts at the
// end.
std::string LookUp(std::string base, std::string_view rest) {
  std::size_t existing = rest.rfind('/');
  while (existing != std::string_view::npos && existing > 0 && !Exists(base + std::string(rest.substr(0, existing))))
    existing = rest.rfind('/', existing - 1);
  existing = existing == std::string_view::npos ? 0 : existing + 1;
  base += rest.substr(0, existing);
  rest.remove_prefix(existing);
  bool is_known_to_miss = true;
  bool is_missing = false;
  for (; !rest.empty(); is_known_to_miss = false) {
    const std::size_t end = std::min(rest.find('/'), rest.size());
    const std::string_view name = rest.substr(0, end), kept = WithoutEnd(name, /*is_last=*/end == rest.size());
    std::string found = name.empty() || is_missing ? std::string() : FindName(base, name, is_known_to_miss);
    if (found.empty() && !kept.empty() && kept != name && !is_missing) found = FindName(base, kept, false);
    is_missing |= found.empty() && !name.empty();
    base += found.empty() ? std::string(kept.empty() ? name : kept) : found;
    if (end < rest.size()) base += '/';
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return base;
}

// The product path with slashes and without a leading \\?\.
std::string WithSlashes(LPCWSTR path) {
  std::string text = SystemFromWide(path);
  std::replace(text.begin(), text.end(), '\\', '/');
  if (text.starts_with("//?/UNC/")) return "//" + text.substr(8);
  if (text.starts_with("//?/")) return text.substr(4);
  return text;
}

bool HasDrive(std::string_view slashed) { return slashed.size() >= 2 && IsLetter(slashed[0]) && slashed[1] == ':'; }

}  // namespace

// ---- drives

namespace {

// The folder that the environment sets for a drive; empty if not set.
std::string NamedDriveFolder(char letter) {
  const char variable[] = {'K', 'V', '_', 'D', 'R', 'I', 'V', 'E', '_', char(letter & ~0x20), 0};
  const char* folder = std::getenv(variable);
  return folder ? WithoutTrailingSlashes(folder) : std::string();
}

// The common start of the other drives' folder paths; the drive letter follows.
std::string DriveFolderPrefix() { return WithoutTrailingSlashes(UserDataFolder()) + "/kestrova/drive_"; }

}  // namespace

std::string DriveFolder(char letter) {
  const std::string named = NamedDriveFolder(letter);
  return named.empty() ? DriveFolderPrefix() + char(letter | 0x20) : named;
}

std::string DriveFolderOf(LPCWSTR path) {
  const std::string slashed = WithSlashes(path);
  return HasDrive(slashed) ? DriveFolder(slashed[0]) : std::string();
}

// ---- mapping

namespace {

// The system path as written: the drive's folder, or empty, and the rest.
struct PathParts {
  std::string base;
  std::string rest;
};

PathParts PartsOf(LPCWSTR path) {
  PathParts parts = {{}, WithSlashes(path)};
  std::string& rest = parts.rest;
  if (HasDrive(rest)) {
    parts.base = DriveFolder(rest[0]) + '/';
    rest.erase(0, rest.size() > 2 && rest[2] == '/' ? 3 : 2);
  }
  return parts;
}

}  // namespace

std::string SystemPathAsWritten(LPCWSTR path) {
  const PathParts parts = PartsOf(path);
  return parts.base + parts.rest;
}

std::string SystemPathFromProduct(LPCWSTR path) {
  const PathParts parts = PartsOf(path);
  const std::string whole = parts.base + parts.rest;
  return whole.empty() || Exists(whole) ? whole : LookUp(parts.base, parts.rest);
}

std::u16string ProductPathFromSystem(std::string_view path) {
  std::string text(path);
  const std::string others = DriveFolderPrefix();
  for (char letter = 'A'; letter <= 'Z' && path.starts_with('/'); ++letter) {
    std::string folder = NamedDriveFolder(letter);
    if (folder.empty() && !path.starts_with(others)) continue;
    if (folder.empty()) folder = others + char(letter | 0x20);
    if (!path.starts_with(folder) || (path.size() > folder.size() && path[folder.size()] != '/')) continue;
    text = std::string{letter, ':'} + std::string(path.substr(folder.size()));
    if (text.size() == 2) text += '/';
    break;
  }
  std::replace(text.begin(), text.end(), '/', '\\');
  return WideFromSystem(text);
}

// ---- taking apart

void _wsplitpath(LPCWSTR path, LPWSTR drive, LPWSTR folder, LPWSTR name, LPWSTR extension) {
  std::u16string_view rest = path ? path : u"";
  const auto give = [](std::u16string_view part, LPWSTR target, int size) {
    if (!target) return;
    part = part.substr(0, std::size_t(size) - 1);
    part.copy(target, part.size());
    target[part.size()] = 0;
  };
  const std::size_t drive_end = rest.size() >= 2 && rest[1] == u':' ? 2 : 0;
  give(rest.substr(0, drive_end), drive, _MAX_DRIVE);
  rest.remove_prefix(drive_end);
  const std::size_t folder_end = rest.find_last_of(u"\\/") + 1;  // npos + 1 is 0
  give(rest.substr(0, folder_end), folder, _MAX_DIR);
  rest.remove_prefix(folder_end);
  const std::size_t point = std::min(rest.rfind(u'.'), rest.size());
  give(rest.substr(0, point), name, _MAX_FNAME);
  give(rest.substr(point), extension, _MAX_EXT);
}

namespace {

std::u16string CurrentFolder() {
  const std::unique_ptr<char, void (*)(void*)> folder(getcwd(nullptr, 0), std::free);
  return folder ? ProductPathFromSystem(folder.get()) : std::u16string();
}

// The root of an absolute path: "\", "C:\", or "\\" with server and share. Empty for a relative path.
std::u16string_view RootOf(std::u16string_view path) {
  if (path.starts_with(u"\\\\")) {
    const std::size_t server = std::min(path.find(u'\\', 2), path.size());
    const std::size_t share = std::min(path.find(u'\\', server + 1), path.size());
    return path.substr(0, std::min(share + 1, path.size()));
  }
  if (path.starts_with(u'\\')) return path.substr(0, 1);
  return path.size() >= 2 && path[1] == u':' ? path.substr(0, path.size() > 2 && path[2] == u'\\' ? 3 : 2)
                                             : std::u16string_view();
}

// Appends the components of `rest` to the path and resolves "." and ".."; ".." stops at the root. A backslash stays at
// the end only if `rest` ends in one, or in one and a component of nothing but points and spaces.
void AppendResolved(std::u16string& path, std::size_t root, std::u16string_view rest) {
  bool is_folder = rest.ends_with(u'\\');
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(u'\\'), rest.size());
    const std::u16string_view name = rest.substr(0, end);
    const bool separated = end < rest.size();
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (name == u"..") {
      if (path.size() > root) path.pop_back();
      while (path.size() > root && path.back() != u'\\') path.pop_back();
    } else if (!name.empty() && name != u".") {
      const std::u16string_view kept = WithoutEnd(name, /*is_last=*/!separated);
      path.append(kept);
      is_folder |= kept.empty();
      if (separated) path += u'\\';
    }
  }
  if (!is_folder && path.size() > root && path.back() == u'\\') path.pop_back();
}

}  // namespace

DWORD GetFullPathNameW(LPCWSTR path, DWORD units, LPWSTR buffer, LPWSTR* filePart) {
  if (filePart) *filePart = nullptr;
  if (!path || !*path) {
    SetLastError(ERROR_INVALID_NAME);
    return 0;
  }
  std::u16string given = path;
  std::replace(given.begin(), given.end(), u'/', u'\\');
  if (RootOf(given).empty()) given = CurrentFolder() + u'\\' + given;
  const std::u16string_view root = RootOf(given);
  std::u16string full(root);
  if (full.size() == 2 && full[1] == u':') full += u'\\';
  AppendResolved(full, full.size(), std::u16string_view(given).substr(root.size()));
  const DWORD result = CopyToBuffer(full, buffer, units);
  const std::size_t name = full.rfind(u'\\') + 1;
  if (filePart && result == full.size() && name < full.size()) *filePart = buffer + name;
  return result;
}

DWORD GetTempPathW(DWORD units, LPWSTR buffer) {
  const char* folder = std::getenv("TMPDIR");
  std::u16string path = ProductPathFromSystem(folder && *folder ? folder : "/tmp");
  if (path.back() != u'\\') path += u'\\';
  return CopyToBuffer(path, buffer, units);
}
