// Names of keys and values as the store keeps them: as UTF-8 in which a lone surrogate keeps three bytes of its own, so
// that every UTF-16 name comes back unchanged, and folded, so that equal bytes mean names that are equal without case.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace kvregistry {

// Appends to out. Folding goes to upper case for ASCII letters and to lower case for all others (letter_case.h).
void AppendName(std::string& out, std::u16string_view name);
void AppendFolded(std::string& out, std::u16string_view name);

// The folded form, of a kept or a folded name or path, in a hive of format 1: Unicode's simple case folding, upper case
// for ASCII letters. It is the same for most names, and never different for two names that are equal without case.
std::string FoldedInFormat1(std::string_view kept);

// The number of UTF-16 units of a kept name, and the units themselves: Decode writes them and a terminator.
DWORD UnitsOf(std::string_view kept);
void Decode(std::string_view kept, LPWSTR units);

}  // namespace kvregistry
