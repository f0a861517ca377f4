// Switches of the user's debug keys, written so that a failure is known.
#pragma once

#include "platform/types.h"

namespace kestrova {

// Writes a 32-bit integer into a key of the user's hive and creates the key. Throws Failure if that fails.
void WriteDebugValue(LPCTSTR key, LPCTSTR name, int value);

}  // namespace kestrova
