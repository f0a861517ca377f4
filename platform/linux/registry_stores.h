// All stores of the process, and which folder the hives are in. Internal to platform/linux.
#pragma once

#include "platform/linux/registry_store.h"

namespace kvregistry {

// The plain store of a hive in the folder that the environment names at this moment. Never null.
std::shared_ptr<Store> CurrentStore(Hive hive);

// A store for one transaction, on the same file as the given store. Never null.
std::shared_ptr<Store> TransactedStore(const Store& store);

}  // namespace kvregistry
