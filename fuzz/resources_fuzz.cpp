// Loads any bytes as a resource-only library and looks up strings, without access outside the bytes.
#include "platform/resources.h"

#include "fuzz/temporary_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const HMODULE module = LoadLibraryExW(WriteTemporaryFile(bytes, size), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  TCHAR text[64];
  for (UINT id = 0; module && id < 0x10000; id += id < 64 ? 1 : 997) LoadStringW(module, id, text, 64);
  if (module) FreeLibrary(module);
  return 0;
}
