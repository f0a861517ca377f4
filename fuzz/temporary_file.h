// One temporary file, for readers that need a path.
#pragma once

#include "platform/files.h"
#include "platform/paths.h"

// Writes the bytes to the file and returns its path.
inline LPCWSTR WriteTemporaryFile(const std::uint8_t* bytes, std::size_t size) {
  static TCHAR path[MAX_PATH];
  static TCHAR folder[MAX_PATH];
  static const UINT made = GetTempPathW(MAX_PATH, folder) ? GetTempFileNameW(folder, _T("kvf"), 0, path) : 0;
  DeleteFileW(path);  // truncating the old file would flush it to the disk on some file systems
  const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  if (made == 0 || file == INVALID_HANDLE_VALUE || !WriteFile(file, bytes, DWORD(size), &written, nullptr))
    __builtin_trap();
  CloseHandle(file);
  return path;
}
