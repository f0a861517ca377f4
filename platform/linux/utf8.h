// Conversion between the product's text and the system's bytes (UTF-8).
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

// Half surrogate pairs become U+FFFD. Null counts as empty.
std::string Utf8FromWide(std::u16string_view text);
std::string Utf8FromWide(LPCWSTR text);
// Invalid bytes become U+FFFD.
std::u16string WideFromUtf8(std::string_view bytes);

// Copies a text to a caller's buffer by the usual rule: returns the length if the text and its terminator fit,
// otherwise the size needed with the terminator, and copies nothing.
DWORD CopyToBuffer(std::u16string_view text, LPWSTR buffer, DWORD units);
