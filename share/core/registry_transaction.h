// A transaction of the registry that the destructor ends.
#pragma once

#include "platform/errors.h"
#include "platform/handles.h"
#include "platform/registry.h"

class RegistryTransaction {
 public:
  RegistryTransaction() : handle_(CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr)) {}
  // Without Commit: rolls back. Close the keys of the transaction before.
  ~RegistryTransaction() {
    if (handle_ != INVALID_HANDLE_VALUE) CloseHandle(handle_);
  }
  RegistryTransaction(const RegistryTransaction&) = delete;
  RegistryTransaction& operator=(const RegistryTransaction&) = delete;

  // For the calls with Transacted in their names, which fail if the transaction could not be made.
  operator HANDLE() const { return handle_; }
  LSTATUS Commit() { return CommitTransaction(handle_) ? ERROR_SUCCESS : LSTATUS(GetLastError()); }

 private:
  const HANDLE handle_;
};
