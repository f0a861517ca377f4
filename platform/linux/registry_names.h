// Names of keys and values as the store keeps them: as UTF-8 in which a lone surrogate keeps three bytes of its own, so
// that every UTF-16 name comes back unchanged, and folded, so that equal bytes mean names that are equal without case.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace kvregistry {

// Appends to out. Folding goes to upper case for ASCII letters and to the simple case folding for all others.
void AppendName(std::string& out, std::u16string_view name);
void AppendFolded(std::string& out, std::u16string_view name);

// The number of UTF-16 units of a kept name, and the units themselves: Decode writes them and a terminator.
DWORD UnitsOf(std::string_view kept);
void Decode(std::string_view kept, LPWSTR units);

}  // namespace kvregistry
