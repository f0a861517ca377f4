// A transaction of the registry that the destructor ends, and calls within one. On a system whose registry has no
// transactions the handle is null, and each call takes effect immediately.
#pragma once

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/registry.h"

class RegistryTransaction {
 public:
  RegistryTransaction()
      : handle_(HasRegistryTransactions() ? CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr) : nullptr) {}
  // Without Commit: rolls back. Close the keys of the transaction before.
  ~RegistryTransaction() {
    if (handle_ && handle_ != INVALID_HANDLE_VALUE) CloseHandle(handle_);
  }
  RegistryTransaction(const RegistryTransaction&) = delete;
  RegistryTransaction& operator=(const RegistryTransaction&) = delete;

  // For the calls below, which fail if the transaction could not be made.
  operator HANDLE() const { return handle_; }
  LSTATUS Commit() { return !handle_ || CommitTransaction(handle_) ? ERROR_SUCCESS : LSTATUS(GetLastError()); }

 private:
  const HANDLE handle_;
};

// As RegCreateKeyExW, RegOpenKeyExW and the deletion of a key without sub-keys, in the transaction unless it is null.
inline LSTATUS CreateKeyIn(HANDLE transaction, HKEY key, LPCWSTR path, REGSAM rights, PHKEY opened) {
  TCHAR noClass[] = _T("");
  if (!transaction) return RegCreateKeyExW(key, path, 0, noClass, 0, rights, nullptr, opened, nullptr);
  return RegCreateKeyTransactedW(key, path, 0, noClass, 0, rights, nullptr, opened, nullptr, transaction, nullptr);
}
inline LSTATUS OpenKeyIn(HANDLE transaction, HKEY key, LPCWSTR path, REGSAM rights, PHKEY opened) {
  if (!transaction) return RegOpenKeyExW(key, path, 0, rights, opened);
  return RegOpenKeyTransactedW(key, path, 0, rights, opened, transaction, nullptr);
}
inline LSTATUS DeleteKeyIn(HANDLE transaction, HKEY key, LPCWSTR path) {
  return transaction ? RegDeleteKeyTransactedW(key, path, 0, 0, transaction, nullptr) : RegDeleteTreeW(key, path);
}
