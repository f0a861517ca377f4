// Conversion between the product's text and UTF-8. Not public.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

// Half surrogate pairs become U+FFFD.
std::string Utf8FromWide(TextView text);
// Invalid bytes become U+FFFD.
Text WideFromUtf8(std::string_view bytes);
