// AppendFile, implemented with a handle that can only append.
#include "platform/append_file.h"

#include <utility>

#include "platform/errors.h"

bool AppendFile::Open(LPCWSTR path) {
  Close();
  const HANDLE file = CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  file_ = reinterpret_cast<std::intptr_t>(file);
  if (GetFileType(file) == FILE_TYPE_DISK) return true;
  Close();
  SetLastError(ERROR_ACCESS_DENIED);
  return false;
}

bool AppendFile::Write(std::string_view bytes) {
  DWORD written = 0;
  if (!WriteFile(reinterpret_cast<HANDLE>(file_), bytes.data(), DWORD(bytes.size()), &written, nullptr)) return false;
  if (written == bytes.size()) return true;
  SetLastError(ERROR_DISK_FULL);
  return false;
}

void AppendFile::Close() {
  if (IsOpen()) CloseHandle(reinterpret_cast<HANDLE>(std::exchange(file_, kNone)));
}
