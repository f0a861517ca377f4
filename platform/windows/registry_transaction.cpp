// Whether the system has transactions of the registry. Wine has none: creating a key in one is not implemented there,
// and opening one ends the program.
#include "platform/registry.h"

bool HasRegistryTransactions() {
  static const bool has = [] {
    const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    HKEY opened = nullptr;
    const LSTATUS status = RegCreateKeyTransactedW(HKEY_CURRENT_USER, L"Software", 0, nullptr, 0, KEY_READ, nullptr,
                                                   &opened, nullptr, transaction, nullptr);
    if (status == ERROR_SUCCESS) RegCloseKey(opened);
    if (transaction != INVALID_HANDLE_VALUE) CloseHandle(transaction);
    return status != ERROR_CALL_NOT_IMPLEMENTED;
  }();
  return has;
}
