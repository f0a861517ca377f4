// A toolpath in the plane: contours of a profile at distances of a step, with arcs fitted to their points, at every
// level down to the depth. Small against a real one, but work of the same kind: deterministic, and some hundred
// milliseconds long.
#pragma once

#include <functional>
#include <span>

#include "host/document/feature_node.h"

namespace kestrova {

// Lengths in metres.
struct ToolpathTask {
  std::span<const HostFeature::Point> profile;  // one point is a hole's centre
  double depth = 0;
  double diameter = 0;
  double step = 0;
  double tolerance = 1e-6;  // of the fitted arcs
};

struct Toolpath {
  int levels = 0;
  int contours = 0;
  int lines = 0;
  int arcs = 0;
  double length = 0;  // metres

  bool operator==(const Toolpath&) const = default;
};

// Tells how much is done, 0 to 100, and of what; false asks to stop.
using ToolpathProgress = std::function<bool(int percent, const char* step)>;

// Stopped, it gives what there is.
Toolpath ComputeToolpath(const ToolpathTask& task, const ToolpathProgress& progress);

}  // namespace kestrova
