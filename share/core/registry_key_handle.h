// An open registry key, closed at the end of its scope. Not public.
#pragma once

#include <utility>

#include "platform/registry.h"

class RegistryKeyHandle {
 public:
  RegistryKeyHandle() = default;
  // Takes an open handle over; null is none.
  explicit RegistryKeyHandle(HKEY handle) : handle_(handle) {}
  RegistryKeyHandle(RegistryKeyHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  RegistryKeyHandle& operator=(RegistryKeyHandle&&) = delete;
  ~RegistryKeyHandle() { Close(); }

  // Null before a key was opened, and where opening it failed: every call then gives ERROR_INVALID_HANDLE.
  operator HKEY() const { return handle_; }
  // Where an opening call puts its handle. The key that was open before is closed.
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
