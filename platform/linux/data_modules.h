// Resource-only libraries that were loaded as data. Their handles have the lowest bit set, which no module's address
// has.
#pragma once

#include <string>

#include "platform/types.h"

inline bool IsDataModule(HINSTANCE module) { return (reinterpret_cast<std::uintptr_t>(module) & 1) != 0; }

// The product path that the library was loaded from; empty if the handle names none.
std::u16string DataModulePath(HINSTANCE module);
