// Processes and the environment on POSIX calls.
#include "platform/process.h"

#include <cstdlib>
#include <string>

#include "platform/text.h"

namespace {

std::string Narrow(LPCWSTR text) {
  std::string bytes(std::size_t(WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr)), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), int(bytes.size()), nullptr, nullptr);
  bytes.pop_back();
  return bytes;
}

}  // namespace

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD units) {
  if (!name || !*name) return 0;
  const char* value = std::getenv(Narrow(name).c_str());
  if (!value) return 0;
  const int needed = MultiByteToWideChar(CP_UTF8, 0, value, -1, nullptr, 0);
  if (DWORD(needed) > units) return DWORD(needed);
  return DWORD(MultiByteToWideChar(CP_UTF8, 0, value, -1, buffer, int(units)) - 1);
}

BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value) {
  if (!name || !*name) return FALSE;
  const std::string key = Narrow(name);
  if (!value) return unsetenv(key.c_str()) == 0;
  return setenv(key.c_str(), Narrow(value).c_str(), /*overwrite=*/1) == 0;
}
