// Splits a command line of the product into words.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

// Returns the words in UTF-8; empty for null and blank text.
std::vector<std::string> SplitCommandLine(LPCWSTR line);
