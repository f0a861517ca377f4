// Conversion between the product's text and the system's bytes.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"
#include "platform/utf8.h"

// Null counts as empty.
std::string Utf8FromWide(LPCWSTR text);

// Names that the system gives: of files, environment variables and modules. A byte that is not part of valid UTF-8
// becomes U+DC00 + byte, a half surrogate pair from U+DC80 to U+DCFF, and such a unit becomes the byte again. So every
// system name has its own product text. Other half pairs become U+FFFD.
std::u16string WideFromSystem(std::string_view bytes);
std::string SystemFromWide(std::u16string_view text);
std::string SystemFromWide(LPCWSTR text);

// Copies a text to a caller's buffer by the usual rule: returns the length if the text and its terminator fit,
// otherwise the size needed with the terminator, and copies nothing.
DWORD CopyToBuffer(std::u16string_view text, LPWSTR buffer, DWORD units);
