// Instances of a pattern that a user chooses: by their numbers, or in an order that is computed.
#pragma once

#include <string>
#include <vector>

#include "framework/text.h"

class QFPatternInfo;

namespace kestrova {

// The numbers of "3,0-2", in this order. Throws WrongUsage for anything else, for a number that is not below count and
// for a repeated one.
std::vector<int> ParseInstances(const std::string& text, LONGLONG count);

// The active instances from the last one to the first.
std::vector<int> Backwards(QFPatternInfo& pattern);
// The active instances from the first one, each followed by the nearest of those that are left; of several, the one
// with the lowest number. Throws Failure if there are more than 20000.
std::vector<int> NearestFirst(QFPatternInfo& pattern);

}  // namespace kestrova
