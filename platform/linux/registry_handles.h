// The table of open key handles. A handle is a slot's number and the slot's use count, so that a closed handle is
// refused and never names another key. Internal to platform/linux.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/registry_stores.h"

namespace kvregistry {

// The key that a handle names.
struct KeyRef {
  std::shared_ptr<Store> store;
  std::int64_t id = 0;
  REGSAM rights = 0;
};

// Whether the handle is a predefined one; then hive is its hive.
bool IsPredefined(HKEY key, Hive& hive);

// Sets `found` to the key of an open or predefined handle, and path (unless null) to the key's folded path from the
// root; ERROR_INVALID_HANDLE for a handle that is not open.
LSTATUS FindHandle(HKEY key, KeyRef& found, std::string* path = nullptr);

HKEY NewHandle(const KeyRef& key, const std::string& path);
LSTATUS CloseHandleOf(HKEY key);

}  // namespace kvregistry
