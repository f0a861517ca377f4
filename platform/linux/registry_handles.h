// The table of open key handles. A handle is a slot's number and the slot's use count, so that a closed one is noticed
// instead of meaning another key. Internal to platform/linux.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/registry_store.h"

namespace kvregistry {

// What a handle stands for.
struct KeyRef {
  std::shared_ptr<Store> store;
  std::int64_t id = 0;
  REGSAM rights = 0;
};

// The predefined handle's hive, if it is one.
bool IsPredefined(HKEY key, Hive& hive);

// Fills `found` with the key of an open or predefined handle, and path (unless null) with its folded path of the whole
// way down; ERROR_INVALID_HANDLE if there is none.
LSTATUS FindHandle(HKEY key, KeyRef& found, std::string* path = nullptr);

HKEY NewHandle(const KeyRef& key, const std::string& path);
LSTATUS CloseHandleOf(HKEY key);

}  // namespace kvregistry
