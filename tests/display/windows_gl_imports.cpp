// Puts the functions of gl_log.cpp in the place of OpenGL's and GLU's in the library's table of imports, before main.
// The others stay the system's, as on Linux.
#include <windows.h>

#include <cstring>

namespace {

template <class T>
T* At(HMODULE module, DWORD offset) {
  return reinterpret_cast<T*>(reinterpret_cast<BYTE*>(module) + offset);
}

void Replace(IMAGE_THUNK_DATA& call, const char* name) {
  const FARPROC own = GetProcAddress(GetModuleHandleW(nullptr), name);
  if (!own) return;
  DWORD rights = 0;
  VirtualProtect(&call, sizeof call, PAGE_READWRITE, &rights);
  call.u1.Function = reinterpret_cast<ULONG_PTR>(own);
  VirtualProtect(&call, sizeof call, rights, &rights);
}

bool ReplaceAll() {
  const HMODULE library = GetModuleHandleW(L"KVSHAREu.dll");
  const auto& headers = *At<IMAGE_NT_HEADERS>(library, DWORD(At<IMAGE_DOS_HEADER>(library, 0)->e_lfanew));
  const DWORD imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (auto* from = At<IMAGE_IMPORT_DESCRIPTOR>(library, imports); from->Name != 0; ++from) {
    const char* other = At<char>(library, from->Name);
    if (_stricmp(other, "opengl32.dll") != 0 && _stricmp(other, "glu32.dll") != 0) continue;
    auto* call = At<IMAGE_THUNK_DATA>(library, from->FirstThunk);
    for (auto* name = At<IMAGE_THUNK_DATA>(library, from->OriginalFirstThunk); name->u1.AddressOfData; ++name, ++call)
      Replace(*call, At<IMAGE_IMPORT_BY_NAME>(library, DWORD(name->u1.AddressOfData))->Name);
  }
  return true;
}

[[maybe_unused]] const bool g_replaced = ReplaceAll();

}  // namespace
