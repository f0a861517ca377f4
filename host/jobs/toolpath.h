// A sample toolpath in the plane: contours around a profile at distances of a step, with fitted arcs, at every level
// down to the depth. It is deterministic and takes some hundred milliseconds, as work for jobs.
#pragma once

#include <functional>
#include <span>

#include "host/document/feature_node.h"

namespace kestrova {

class HostOperation;

// Lengths in metres.
struct ToolpathTask {
  std::span<const HostFeature::Point> profile;  // one point is a hole's centre
  double depth = 0;
  double diameter = 0;
  double step = 0;
  double tolerance = 1e-6;  // of the fitted arcs
  bool coarse = false;      // for a picture: far fewer points, in a few milliseconds
};

struct Toolpath {
  int levels = 0;
  int contours = 0;
  int lines = 0;
  int arcs = 0;
  double length = 0;  // metres

  bool operator==(const Toolpath&) const = default;
};

// The operation's geometry, with defaults for what is missing.
ToolpathTask ToolpathTaskOf(const HostOperation& operation);

// Gets the percentage and the step; returns false to stop.
using ToolpathProgress = std::function<bool(int percent, const char* step)>;
// Gets a contour and its depth below the profile in metres: the ends of its lines and arcs in order, and every fourth
// point of each arc.
using ToolpathContour = std::function<void(double depth, std::span<const HostFeature::Point> points)>;

// Stopped by `progress`, it returns the contours so far. Optional: contour.
Toolpath ComputeToolpath(const ToolpathTask& task, const ToolpathProgress& progress,
                         const ToolpathContour& contour = {});

}  // namespace kestrova
