#include "host/registry/debug_values.h"

#include "host/registry/registry_reader.h"

namespace kestrova {

void WriteDebugValue(LPCTSTR key, LPCTSTR name, int value) {
  RegistryKeyHandle open;
  LSTATUS status = CreateKeyIn(nullptr, HKEY_CURRENT_USER, key, KEY_SET_VALUE, open.Receive());
  const BYTE* const bytes = reinterpret_cast<const BYTE*>(&value);
  if (status == ERROR_SUCCESS) status = RegSetValueExW(open, name, 0, REG_DWORD, bytes, sizeof value);
  CheckStatus(status, {HKEY_CURRENT_USER, key});
}

}  // namespace kestrova
