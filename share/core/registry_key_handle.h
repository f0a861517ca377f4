// An open registry key that the destructor closes.
#pragma once

#include <utility>

#include "platform/registry.h"

class RegistryKeyHandle {
 public:
  RegistryKeyHandle() = default;
  // Takes ownership of an open handle; null: no key.
  explicit RegistryKeyHandle(HKEY handle) : handle_(handle) {}
  RegistryKeyHandle(RegistryKeyHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  RegistryKeyHandle& operator=(RegistryKeyHandle&&) = delete;
  ~RegistryKeyHandle() { Close(); }

  // Null if no key was opened or opening failed. Registry calls on null return ERROR_INVALID_HANDLE.
  operator HKEY() const { return handle_; }
  // The address for the result of an opening call. Closes the key that is open.
  PHKEY Receive() {
    Close();
    return &handle_;
  }
  void Close() {
    if (handle_) RegCloseKey(handle_);
    handle_ = nullptr;
  }

 private:
  HKEY handle_ = nullptr;
};
