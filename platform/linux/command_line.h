// A command line of the product taken apart into words.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

// The words in UTF-8; none for null or blanks only.
std::vector<std::string> SplitCommandLine(LPCWSTR line);
