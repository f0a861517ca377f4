// Texts of the product as the bytes that the system takes, and back.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

// Lone surrogates become U+FFFD. Null is empty.
std::string Utf8FromWide(std::u16string_view text);
std::string Utf8FromWide(LPCWSTR text);
// Bytes that are no UTF-8 become U+FFFD.
std::u16string WideFromUtf8(std::string_view bytes);

// Gives a text to a caller's buffer by the rule that most calls share: its length if it fits with its terminator,
// else the size needed with the terminator, and nothing is written.
DWORD CopyToBuffer(std::u16string_view text, LPWSTR buffer, DWORD units);
