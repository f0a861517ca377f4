// The pattern of a node, for users and programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "host/document/document_units.h"

class QFPatternInfo;

namespace kestrova {

class HostNode;

// The description of the node's pattern; null without one.
QFPatternInfo* PatternOf(HostNode& node);

// "linear, 5 x 2, spacing 20mm and 10mm; 8 of 10 instances active, skipped 3, 7; order for operation 9". The node has a
// pattern manager. Long lists are cut.
std::string PatternText(HostNode& node);
// {"kind", "facts", "instances", "active", "skipped", "orders"}, lengths in the unit.
nlohmann::ordered_json PatternJson(HostNode& node, const LengthUnit& unit);
// A number for JSON, without the last digit's error from the change of units; null for infinity and NaN.
nlohmann::ordered_json JsonNumber(double value);

}  // namespace kestrova
