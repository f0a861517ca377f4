// Any bytes as a resource-only library: loading and looking up must stay inside them.
#include "platform/files.h"
#include "platform/resources.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static TCHAR path[MAX_PATH];
  static TCHAR temporary[MAX_PATH];
  static const UINT made = GetTempPathW(MAX_PATH, temporary) ? GetTempFileNameW(temporary, _T("kvf"), 0, path) : 0;
  DeleteFileW(path);  // cutting the old one short would cost a flush to the disk on some file systems
  const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  if (made == 0 || file == INVALID_HANDLE_VALUE || !WriteFile(file, bytes, DWORD(size), &written, nullptr))
    __builtin_trap();
  CloseHandle(file);
  const HMODULE module = LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
  TCHAR text[64];
  for (UINT id = 0; module && id < 0x10000; id += id < 64 ? 1 : 997) LoadStringW(module, id, text, 64);
  if (module) FreeLibrary(module);
  return 0;
}
