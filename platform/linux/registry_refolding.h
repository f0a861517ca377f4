// Brings the folded names of a hive of format 1 to those of format 2. Internal to platform/linux.
#pragma once

#include <sqlite3.h>

#include "platform/registry.h"

namespace kvregistry {

inline constexpr int kFormatOfNames = 2;

// In one transaction; a failure leaves the hive as it was. Rows that contradict each other stay as they are.
LSTATUS RefoldNames(sqlite3* connection);

}  // namespace kvregistry
