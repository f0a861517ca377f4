// Resource-only libraries that are loaded as data. Their handles have the lowest bit set; module addresses never have.
#pragma once

#include <string>

#include "platform/types.h"

inline bool IsDataModule(HINSTANCE module) { return (reinterpret_cast<std::uintptr_t>(module) & 1) != 0; }

// The product path from which the library was loaded; empty for an invalid handle.
std::u16string DataModulePath(HINSTANCE module);
